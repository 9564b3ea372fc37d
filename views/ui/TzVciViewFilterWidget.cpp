// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ui/TzVciViewFilterWidget.h"

#include "vci/TzVciTypes.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>

namespace {

constexpr int allData = -1; // data of the first item of every combo box
constexpr int barMargin = 3;
constexpr int idEditWidth = 150;
const char *const controlStyle =
    "QWidget { border: 1px solid #A0C8F0; border-radius: 2px; }"
    "QComboBox QAbstractItemView { border: 1px solid #A0C8F0; selection-background-color: #A0C8F0; }";

struct Direction
{
    const char *text;
    int value;
};
constexpr Direction canDirections[] = {
    {QT_TRANSLATE_NOOP("TzVciViewFilterWidget", "Rx"), TzVciCanFrameType::received},
    {QT_TRANSLATE_NOOP("TzVciViewFilterWidget", "Tx"), TzVciCanFrameType::transmitted},
    {QT_TRANSLATE_NOOP("TzVciViewFilterWidget", "Error Frame"), TzVciCanFrameType::error},
};
constexpr Direction linDirections[] = {
    {QT_TRANSLATE_NOOP("TzVciViewFilterWidget", "Rx"), TzRawFrameFilter::linReceived},
    {QT_TRANSLATE_NOOP("TzVciViewFilterWidget", "Tx"), TzRawFrameFilter::linWritten},
};

} // namespace

TzVciViewFilterWidget::TzVciViewFilterWidget(std::uint8_t viewKind, QObject *parent)
    : QObject(parent)
    , m_viewKind(viewKind)
    , m_filter(std::make_shared<TzRawFrameFilter>())
{
}

void TzVciViewFilterWidget::setupUi(QWidget *container)
{
    m_container = container;
    m_container->hide();
    m_lineEditId = createIdEdit();
    m_comboDevice = createDeviceCombo();
    m_comboChannel = createChannelCombo();
    m_comboDirection = createDirectionCombo();

    int place = 0;
    for (QWidget *control : {static_cast<QWidget *>(m_lineEditId), static_cast<QWidget *>(m_comboDevice),
                             static_cast<QWidget *>(m_comboChannel), static_cast<QWidget *>(m_comboDirection)})
        m_controls.insert(place++, control);

    auto *layout = new QHBoxLayout(m_container);
    layout->setContentsMargins(barMargin, barMargin, barMargin, barMargin);
    for (QWidget *control : qAsConst(m_controls)) {
        control->setStyleSheet(QLatin1String(controlStyle));
        layout->addWidget(control);
    }
    layout->addStretch();
}

void TzVciViewFilterWidget::setEnabled(bool on)
{
    if (on == m_filter->enabled)
        return;
    m_filter->enabled = on;
    Q_EMIT filterUpdated();
}

void TzVciViewFilterWidget::onFilterConditionChanged()
{
    // "All" is -1, which cut to a byte is the value for any in each of the three fields.
    m_filter->device = static_cast<std::int8_t>(m_comboDevice->currentData().toInt());
    m_filter->channel = static_cast<std::int8_t>(m_comboChannel->currentData().toInt());
    m_filter->direction = static_cast<std::uint8_t>(m_comboDirection->currentData().toInt());
    m_filter->ids.setText(m_lineEditId->text());
    Q_EMIT filterUpdated();
}

bool TzVciViewFilterWidget::isLin() const
{
    return TzVciViewKind::isLinFamily(m_viewKind);
}

QLineEdit *TzVciViewFilterWidget::createIdEdit()
{
    auto *edit = new QLineEdit(m_container);
    edit->setObjectName(QStringLiteral("lineEditId"));
    edit->setPlaceholderText(tr("ID Filter (hex)"));
    edit->setMinimumWidth(idEditWidth);
    edit->setToolTip(tr("Support formats:\nSingle ID: 123\nID Range: 100-200\nMultiple IDs: 100,200,300\n"
                        "Exclude ID: !123\nCombined: 100-200,!150,300"));
    connect(edit, &QLineEdit::textChanged, this, &TzVciViewFilterWidget::onFilterConditionChanged);
    return edit;
}

QComboBox *TzVciViewFilterWidget::createDeviceCombo()
{
    QComboBox *combo = createCombo(QStringLiteral("comboDevice"), tr("Select device"), tr("All Devices"));
    for (int device = 0; device < tzVciMaxDevices; ++device)
        combo->addItem(QStringLiteral("%1%2").arg(tr("Device")).arg(device), device);
    return combo;
}

QComboBox *TzVciViewFilterWidget::createChannelCombo()
{
    QComboBox *combo = createCombo(QStringLiteral("comboChannel"), tr("Select channel"), tr("All Channels"));
    const QString family = isLin() ? QStringLiteral("LIN") : QStringLiteral("CAN");
    for (int channel = 0; channel < tzVciMaxChannels; ++channel)
        combo->addItem(QStringLiteral("%1%2").arg(family).arg(channel + 1), channel);
    return combo;
}

QComboBox *TzVciViewFilterWidget::createDirectionCombo()
{
    QComboBox *combo =
        createCombo(QStringLiteral("comboDirection"), tr("Select message direction"), tr("All Directions"));
    const auto add = [combo](const Direction &direction) { combo->addItem(tr(direction.text), direction.value); };
    if (isLin())
        std::for_each(std::begin(linDirections), std::end(linDirections), add);
    else
        std::for_each(std::begin(canDirections), std::end(canDirections), add);
    return combo;
}

// With its first item, which stands for no choice.
QComboBox *TzVciViewFilterWidget::createCombo(const QString &objectName, const QString &toolTip, const QString &allText)
{
    auto *combo = new QComboBox(m_container);
    combo->setObjectName(objectName);
    combo->setToolTip(toolTip);
    combo->addItem(allText, allData);
    connect(combo, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &TzVciViewFilterWidget::onFilterConditionChanged);
    return combo;
}
