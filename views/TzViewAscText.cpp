// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TzViewAscText.h"

#include "views/TzRawViewFamily.h"

#include <QAbstractItemModel>
#include <QDateTime>
#include <QLocale>

namespace {

constexpr int idWidth = 3;
constexpr int directionWidth = 4;
constexpr int usualLineLength = 80; // characters: what is reserved for each row

/// One row of the view, as the log names its fields.
struct AscFields
{
    AscFields(const QAbstractItemModel &model, int row)
    {
        const auto cell = [&model, row](int column) { return model.index(row, column).data().toString(); };
        time = cell(TzRawViewFamily::TimeColumn);
        const int cycle = time.indexOf(QLatin1Char('[')); // a folded row shows its cycle there
        if (cycle >= 0)
            time.truncate(cycle);
        channel = cell(TzRawViewFamily::ChannelColumn).remove(QLatin1String("CAN")).trimmed();
        id = cell(TzRawViewFamily::IdColumn);
        direction = cell(TzRawViewFamily::CanDirectionColumn);
        length = cell(TzRawViewFamily::CanLengthColumn);
        data = cell(TzRawViewFamily::CanDataColumn);
    }

    QString time;
    QString channel;
    QString id;
    QString direction;
    QString length;
    QString data;
};

void addPadding(QString &text, int count)
{
    for (; count > 0; --count)
        text += QLatin1Char(' ');
}

void addRow(QString &text, const AscFields &row)
{
    text += row.time;
    text += QLatin1Char(' ');
    text += row.channel;
    text += QLatin1String("  ");
    if (row.direction.contains(QLatin1String("Error"))) {
        text += QLatin1String("ErrorFrame\n");
        return;
    }
    addPadding(text, idWidth - row.id.size());
    text += row.id;
    text += QLatin1String("   ");
    text += row.direction;
    addPadding(text, directionWidth - row.direction.size());
    text += QLatin1String("   d ");
    text += row.length;
    text += QLatin1Char(' ');
    text += row.data;
    text += QLatin1Char('\n');
}

} // namespace

QString tzViewAscText(const QAbstractItemModel &model, const QDateTime &now)
{
    const QString date = QLocale(QLocale::English, QLocale::UnitedStates)
                             .toString(now, QStringLiteral("ddd MMM dd hh:mm:ss.zzz ap yyyy"));
    QString text = QLatin1String("date ") + date +
                   QLatin1String("\nbase hex timestamps absolute\n"
                                 "internal events logged\n"
                                 "// version 12.0.0\n"
                                 "Begin Triggerblock ") +
                   date + QLatin1Char('\n');
    const int rows = model.rowCount();
    text.reserve(text.size() + rows * usualLineLength);
    for (int row = 0; row < rows; ++row)
        addRow(text, AscFields(model, row));
    text += QLatin1String("End TriggerBlock\n");
    return text;
}
