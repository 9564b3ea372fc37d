// SPDX-License-Identifier: GPL-3.0-or-later
#include "common/ui/WorkbenchProxyStyle.h"

#include "common/ui/WorkbenchStyle.h"

#include <QIcon>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOption>

namespace Common {
namespace {

constexpr int messageBoxIconSize = 32; // the size in which the icons are drawn; others would be scaled
constexpr qreal chevronReach = 4.0;    // from the middle to either end, in pixels
constexpr qreal chevronStroke = 1.4;

/// The file of a message box's icon, null for any other icon.
const char *messageBoxIcon(QStyle::StandardPixmap icon)
{
    switch (icon) {
    case QStyle::SP_MessageBoxQuestion: return ":/resource/question.png";
    case QStyle::SP_MessageBoxInformation: return ":/resource/info.png";
    case QStyle::SP_MessageBoxWarning: return ":/resource/warning.png";
    case QStyle::SP_MessageBoxCritical: return ":/resource/critical.png";
    default: return nullptr;
    }
}

/// An angle around the origin that points to the right.
QPainterPath chevron()
{
    QPainterPath path(QPointF(-chevronReach / 2, -chevronReach));
    path.lineTo(chevronReach / 2, 0);
    path.lineTo(-chevronReach / 2, chevronReach);
    return path;
}

} // namespace

WorkbenchProxyStyle::WorkbenchProxyStyle()
    : QProxyStyle(QStringLiteral("Fusion"))
{
}

void WorkbenchProxyStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                                        const QWidget *widget) const
{
    if (element == PE_IndicatorBranch)
        drawBranch(*option, *painter);
    else
        QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void WorkbenchProxyStyle::drawBranch(const QStyleOption &option, QPainter &painter)
{
    if (!option.state.testFlag(State_Children))
        return;
    const QRgb colour = option.state.testFlag(State_Enabled) ? WorkbenchColor::symbol : WorkbenchColor::mutedText;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(colour), chevronStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.translate(QRectF(option.rect).center());
    if (option.state.testFlag(State_Open))
        painter.rotate(90);
    else if (option.direction == Qt::RightToLeft)
        painter.rotate(180);
    painter.drawPath(chevron());
    painter.restore();
}

QIcon WorkbenchProxyStyle::standardIcon(StandardPixmap standardIcon, const QStyleOption *option,
                                        const QWidget *widget) const
{
    if (const char *file = messageBoxIcon(standardIcon))
        return QIcon(QString::fromLatin1(file));
    return QProxyStyle::standardIcon(standardIcon, option, widget);
}

int WorkbenchProxyStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    return metric == PM_MessageBoxIconSize ? messageBoxIconSize : QProxyStyle::pixelMetric(metric, option, widget);
}

} // namespace Common
