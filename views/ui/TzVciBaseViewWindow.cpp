// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ui/TzVciBaseViewWindow.h"

#include "views/TzVisibleRows.h"

#include <QAbstractItemView>
#include <QCloseEvent>
#include <QScrollBar>
#include <QTimer>

#include <utility>

namespace {

constexpr std::chrono::milliseconds dataInterval{20};
constexpr std::chrono::milliseconds uiInterval{500};

TzVisibleRows visibleRowsOf(const QAbstractItemView &view, int rowHeight)
{
    const QScrollBar *bar = view.verticalScrollBar();
    return TzVisibleRows::compute({.rows = view.model()->rowCount(),
                                   .viewportHeight = view.viewport()->height(),
                                   .rowHeight = rowHeight,
                                   .scrollValue = bar->value(),
                                   .scrollMaximum = bar->maximum()});
}

} // namespace

TzVciBaseViewWindow::TzVciBaseViewWindow(TzVciDeviceManager *deviceManager, std::uint8_t viewKind, QWidget *parent)
    : QWidget(parent)
    , m_deviceManager(deviceManager)
    , m_viewKind(viewKind)
    , m_dataTimer(new QTimer(this))
    , m_uiTimer(new QTimer(this))
    , m_intake(viewKind)
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_dataTimer->setObjectName(QStringLiteral("dataTimer"));
    m_uiTimer->setObjectName(QStringLiteral("uiTimer"));
    m_dataTimer->setTimerType(Qt::PreciseTimer); // the default may stretch 20 ms ticks, and with them the queue
    m_dataTimer->setInterval(dataInterval);
    m_uiTimer->setInterval(uiInterval);
    connect(m_dataTimer, &QTimer::timeout, this, &TzVciBaseViewWindow::onUpdateData);
    connect(m_uiTimer, &QTimer::timeout, this, &TzVciBaseViewWindow::onUpdateUi);
}

TzVciBaseViewWindow::~TzVciBaseViewWindow()
{
    leaveDelivery(); // for a derived class that forgot it: late, but before the intake goes
    m_dataTimer->stop();
    m_uiTimer->stop();
}

void TzVciBaseViewWindow::leaveDelivery()
{
    if (!std::exchange(m_leftDelivery, true))
        Q_EMIT sigLeaveDelivery();
}

void TzVciBaseViewWindow::setTimersStopped(bool stopped)
{
    for (QTimer *timer : {m_dataTimer, m_uiTimer}) {
        if (stopped)
            timer->stop();
        else
            timer->start();
    }
}

void TzVciBaseViewWindow::stopRecording() {}

void TzVciBaseViewWindow::onTimesChanged() {}

void TzVciBaseViewWindow::onClearViewWindow(std::uint8_t windowType)
{
    const bool sameFamily = TzVciViewKind::isLinFamily(m_viewKind) ? TzVciViewKind::isLinFamily(windowType)
                                                                   : TzVciViewKind::isCanFamily(windowType);
    if (!sameFamily)
        return;
    Q_EMIT sigResetUi();
    m_intake.resetCounters();
}

void TzVciBaseViewWindow::onUpdateFilters(std::unordered_map<std::uint8_t, std::unordered_set<std::uint8_t>> devices)
{
    m_intake.setDevices(devices);
}

void TzVciBaseViewWindow::setPaused(bool paused)
{
    if (paused == isPaused())
        return;
    m_intake.setPaused(paused);
    Q_EMIT sigPausedChanged(paused);
}

void TzVciBaseViewWindow::watchVisibleRows(QAbstractItemView *view)
{
    m_view = view;
    connect(view->verticalScrollBar(), &QScrollBar::valueChanged, this, &TzVciBaseViewWindow::onScrolled);
}

void TzVciBaseViewWindow::updateVisibleRows()
{
    const TzVisibleRows visible = visibleRowsOf(*m_view, rowHeight);
    Q_EMIT sigUpdateVisibleRow(visible.first, visible.last);
}

void TzVciBaseViewWindow::onScrolled()
{
    const TzVisibleRows visible = visibleRowsOf(*m_view, rowHeight);
    m_atBottom = visible.atBottom;
    Q_EMIT sigUpdateVisibleRow(visible.first, visible.last);
}

void TzVciBaseViewWindow::closeEvent(QCloseEvent *event)
{
    stopRecording();
    setTimersStopped(true);
    event->accept();
}

void TzVciBaseViewWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (!m_view)
        return;
    const TzVisibleRows visible = visibleRowsOf(*m_view, rowHeight);
    m_atBottom = m_atBottom || visible.atBottom; // a smaller page moves the end away, not the user
    Q_EMIT sigUpdateVisibleRow(visible.first, visible.last);
}
