// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TzBenchWindowHelper.h"

#include "app/TzViewTiler.h"
#include "common/Log.h"
#include "vci/TzVciDeviceManager.h"
#include "vci/TzVciDeviceStore.h"
#include "vci/TzVciTypes.h"
#include "views/ui/TzCanViewWindow.h"
#include "views/ui/TzLinViewWindow.h"

#include <QCloseEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>

namespace {

constexpr TzFrameDrain::Family canFamily{.protocol = TzVciProtocolId::can, .threadName = "drain-can", .repeats = true};
constexpr TzFrameDrain::Family linFamily{.protocol = TzVciProtocolId::lin, .threadName = "drain-lin", .repeats = false};
constexpr int allDevices = -1;

} // namespace

TzBenchWindowHelper::TzBenchWindowHelper(TzVciDeviceManager *manager, TzVciDeviceStore *store, QMdiArea *area,
                                         QWidget *parent)
    : QWidget(parent)
    , m_manager(manager)
    , m_store(store)
    , m_area(area)
    , m_arrangement(area)
    , m_inlet(std::make_shared<TzFrameInlet>([this](int deviceIndex, std::uint8_t cmd) {
        QMetaObject::invokeMethod(
            this, [this, deviceIndex, cmd] { onVciStatus(deviceIndex, cmd); }, Qt::QueuedConnection);
    }))
    , m_canDrain(canFamily, m_inlet->canQueue(),
                 [this](const std::vector<TzVciMessage> &batch) { m_views.deliver(TzVciProtocolId::can, batch); })
    , m_linDrain(linFamily, m_inlet->linQueue(),
                 [this](const std::vector<TzVciMessage> &batch) { m_views.deliver(TzVciProtocolId::lin, batch); })
{
    hide();
    connectDevices();
}

TzBenchWindowHelper::~TzBenchWindowHelper()
{
    disconnectDevices();
    m_canDrain.stop();
    m_linDrain.stop();
    for (TzVciBaseViewWindow *view : m_views.views())
        view->disconnect(this); // views that outlive the helper have nobody to report to
}

void TzBenchWindowHelper::connectDevices()
{
    m_manager->setStatusCallback(
        [inlet = m_inlet](int deviceIndex, std::uint8_t cmd) { inlet->reportStatus(deviceIndex, cmd); });
    m_manager->setCanCallback([inlet = m_inlet](const std::vector<TzVciMessage> &batch) { inlet->putCan(batch); });
    m_manager->setLinCallback([inlet = m_inlet](const std::vector<TzVciMessage> &batch) { inlet->putLin(batch); });
}

void TzBenchWindowHelper::disconnectDevices()
{
    if (m_inlet->isClosed())
        return;
    m_manager->setStatusCallback({});
    m_manager->setCanCallback({});
    m_manager->setLinCallback({});
    m_inlet->close(); // open devices hold copies of the callbacks
}

void TzBenchWindowHelper::shutdown()
{
    disconnectDevices();
    disconnect(this, &TzBenchWindowHelper::sigVciStatusChanged, nullptr, nullptr);
    m_area->closeAllSubWindows();
    m_manager->closeAllDevices();
    m_canDrain.stop();
    m_linDrain.stop();
}

bool TzBenchWindowHelper::isDraining(std::uint8_t protocol) const
{
    return protocol == TzVciProtocolId::lin ? m_linDrain.isRunning() : m_canDrain.isRunning();
}

void TzBenchWindowHelper::newView(std::uint8_t kind, Request request)
{
    if (!hasRoomForView(kind, request))
        return;
    if (TzVciBaseViewWindow *view = createView(kind))
        addView(view);
}

void TzBenchWindowHelper::addView(TzVciBaseViewWindow *view)
{
    connect(this, &TzBenchWindowHelper::sigClearViewWindow, view, &TzVciBaseViewWindow::onClearViewWindow);
    connect(this, &TzBenchWindowHelper::sigTimesChanged, view, &TzVciBaseViewWindow::onTimesChanged);
    // A view that is destroyed without having been closed. The drain threads must have left it before its destructor
    // takes it apart; the others move up when it is gone.
    connect(view, &TzVciBaseViewWindow::sigLeaveDelivery, this, [this, view] { m_views.remove(view); });
    connect(view, &QObject::destroyed, this, &TzBenchWindowHelper::arrangeViews);
    view->installEventFilter(this);
    m_views.append(view);
    m_views.renumber();
    QMdiSubWindow *subWindow = m_area->addSubWindow(view);
    connect(view, &QObject::destroyed, subWindow, &QObject::deleteLater); // a view closed by itself leaves no frame
    subWindow->show();
    tileViews();
}

TzVciBaseViewWindow *TzBenchWindowHelper::createView(std::uint8_t kind)
{
    switch (kind) {
    case TzVciViewKind::can: return new TzCanViewWindow(m_manager, m_store, m_area);
    case TzVciViewKind::lin: return new TzLinViewWindow(m_manager, m_store, m_area);
    default: return nullptr;
    }
}

bool TzBenchWindowHelper::hasRoomForView(std::uint8_t kind, Request request)
{
    if (m_views.views().size() < tzMaxViews)
        return true;
    if (request == Request::ByProgram) {
        Common::logInfo("No view of kind {} is opened by itself: {} views are open already", kind, tzMaxViews);
    } else {
        QMessageBox::warning(window(), tr("Warnning"),
                             tr("The view is full, please close other views and then open them again. "
                                "(CAN/LIN total does not exceed 4 views)"));
    }
    return false;
}

bool TzBenchWindowHelper::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::Close)
        return QWidget::eventFilter(watched, event);
    // The view decides first. One that agrees leaves the list now, while it is whole: its destruction comes later, and
    // a drain thread must not meet it half destroyed.
    watched->event(event);
    auto *view = qobject_cast<TzVciBaseViewWindow *>(watched);
    if (event->isAccepted() && view)
        onCloseViewWindow(view);
    return true;
}

void TzBenchWindowHelper::onCloseViewWindow(TzVciBaseViewWindow *viewWindow)
{
    if (!m_views.remove(viewWindow)) { // then it may point anywhere
        QMessageBox::warning(window(), tr("Warnning"),
                             tr("System exception: The current window handle is not recognized"));
        return;
    }
    viewWindow->removeEventFilter(this);
    viewWindow->disconnect(this);
    disconnect(this, nullptr, viewWindow, nullptr);
    arrangeViews();
}

void TzBenchWindowHelper::arrangeViews()
{
    m_views.renumber();
    tileViews();
}

void TzBenchWindowHelper::closeViews()
{
    m_area->closeAllSubWindows();
}

void TzBenchWindowHelper::tileViews()
{
    std::vector<QMdiSubWindow *> windows;
    for (const TzVciBaseViewWindow *view : m_views.views()) {
        if (auto *window = qobject_cast<QMdiSubWindow *>(view->parentWidget()))
            windows.push_back(window);
    }
    m_arrangement.tile(windows);
}

void TzBenchWindowHelper::onVciStatus(int deviceIndex, std::uint8_t cmd)
{
    if (m_inlet->isClosed())
        return; // was on its way when the window let go of the devices
    Q_EMIT sigVciStatusChanged(deviceIndex, cmd);
    switch (cmd) {
    case VciStatus::canChannelOpened: onChannelOpened(m_canDrain); break;
    case VciStatus::linChannelOpened: onChannelOpened(m_linDrain); break;
    case VciStatus::canChannelClosed: onChannelClosed(m_canDrain); break;
    case VciStatus::linChannelClosed: onChannelClosed(m_linDrain); break;
    default: break;
    }
}

void TzBenchWindowHelper::onChannelOpened(TzFrameDrain &drain)
{
    const std::uint8_t kind = drain.family().protocol; // the raw kind of a family equals its protocol id
    if (!drain.isRunning() && drain.start())
        Q_EMIT sigClearViewWindow(kind);
    if (!m_views.hasFamily(kind))
        newView(kind, Request::ByProgram);
}

void TzBenchWindowHelper::onChannelClosed(TzFrameDrain &drain)
{
    if (!anyChannelOpen(drain.family().protocol))
        drain.stop();
}

bool TzBenchWindowHelper::anyChannelOpen(std::uint8_t protocol) const
{
    return protocol == TzVciProtocolId::lin ? m_store->anyLinChannelOpen(allDevices)
                                            : m_store->anyCanChannelOpen(allDevices);
}
