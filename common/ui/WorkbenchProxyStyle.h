// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProxyStyle>

namespace Common {

/// Fusion, with what a style sheet draws blurred on high-density displays drawn by the program itself: the icons of
/// message boxes come from ":/resource" in the display's full resolution, and the branches of trees are vector paths.
///
/// UI thread. The style sheet wraps this style and asks it for whatever the sheet does not set, so the sheet must name
/// neither message box icons nor branch images.
class WorkbenchProxyStyle : public QProxyStyle
{
    Q_OBJECT
public:
    WorkbenchProxyStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget = nullptr) const override;
    QIcon standardIcon(StandardPixmap standardIcon, const QStyleOption *option = nullptr,
                       const QWidget *widget = nullptr) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option = nullptr,
                    const QWidget *widget = nullptr) const override;

private:
    static void drawBranch(const QStyleOption &option, QPainter &painter);
};

} // namespace Common
