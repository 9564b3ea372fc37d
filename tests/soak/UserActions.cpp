// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/soak/UserActions.h"

#include "tests/logging/blf/BlfTestWriter.h"
#include "tests/soak/FaultPlayer.h"
#include "tests/soak/Recorder.h"
#include "tests/soak/Workbench.h"
#include "vci/TzVciTypes.h"
#include "views/TzRawViewModel.h"
#include "views/ui/TzRawViewWindow.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QMessageBox>

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace tzsoak {

namespace {

constexpr std::size_t mostStoppedChannels = 4;
constexpr std::array idFilters = {"", "100-10f", "!103", "300,301,30a", "100-10f,!105", "XYZ", "0-3f", "7e5"};

constexpr auto logPath = "user.blf";
constexpr int logFrames = 2000;

bool writeLog()
{
    tztest::BlfTestWriter log({.level = 6});
    for (std::uint32_t i = 0; i < logFrames; ++i)
        log.add(tztest::CanMessageBody{.id = i}, {.timeStamp = std::uint64_t{1'000'000} * i});
    return log.save(QLatin1String(logPath));
}

void click(const QWidget &window, const char *name)
{
    if (auto *button = window.findChild<QAbstractButton *>(QLatin1String(name)))
        button->click();
}

} // namespace

UserActions::UserActions(Workbench &workbench, const FaultPlayer &faults, std::vector<const Recorder *> recorders,
                         std::mt19937 &random)
    : m_workbench(workbench)
    , m_faults(faults)
    , m_recorders(std::move(recorders))
    , m_random(random)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &UserActions::actNext);
}

void UserActions::start()
{
    if (!writeLog())
        fail("the log that the user converts cannot be written");
    m_running = true;
    m_timer.start(longestActionPause);
}

void UserActions::stop()
{
    m_running = false;
    m_timer.stop();
}

bool UserActions::isIdle() const
{
    return m_boxes.allMet() && QApplication::activeModalWidget() == nullptr;
}

int UserActions::between(int least, int most)
{
    return std::uniform_int_distribution<int>(least, most)(m_random);
}

void UserActions::actNext()
{
    static constexpr std::array<Action, 14> actions = {{
        {10, &UserActions::pause},
        {8, &UserActions::fold},
        {8, &UserActions::toggleFilterBar},
        {8, &UserActions::typeFilter},
        {6, &UserActions::chooseInFilter},
        {4, &UserActions::clear},
        {3, &UserActions::chooseDevices},
        {3, &UserActions::closeView},
        {4, &UserActions::openView},
        {2, &UserActions::tile},
        {2, &UserActions::resizeWindow},
        {4, &UserActions::stopChannel},
        {6, &UserActions::startChannel},
        {2, &UserActions::convertLog},
    }};
    if (!m_running)
        return;
    m_timer.start(std::chrono::milliseconds(
        between(static_cast<int>(shortestActionPause.count()), static_cast<int>(longestActionPause.count()))));
    // The dialog of the action before must be through. Where it has just gone, this may still be its event loop: the
    // view that asked takes no further question until that has ended.
    const bool wasSettled = std::exchange(m_settled, isIdle());
    if (!wasSettled || !m_settled)
        return;
    if (m_boxes.unexpected() > 0)
        fail("a message box or dialog that nobody expected");
    const int all = std::accumulate(actions.begin(), actions.end(), 0,
                                    [](int sum, const Action &action) { return sum + action.weight; });
    int chosen = between(0, all - 1);
    for (const Action &action : actions) {
        chosen -= action.weight;
        if (chosen >= 0)
            continue;
        ++m_count;
        (this->*action.act)();
        m_settled = isIdle();
        return;
    }
}

TzRawViewWindow *UserActions::anyView()
{
    const auto views = m_workbench.views();
    const int chosen = between(0, static_cast<int>(views.size()) - 1);
    return qobject_cast<TzRawViewWindow *>(views[static_cast<std::size_t>(chosen)]);
}

TzRawViewWindow *UserActions::freeView()
{
    const auto views = m_workbench.freeViews();
    if (views.empty())
        return nullptr;
    const int chosen = between(0, static_cast<int>(views.size()) - 1);
    return qobject_cast<TzRawViewWindow *>(views[static_cast<std::size_t>(chosen)]);
}

// A free view that no recording counts on.
TzRawViewWindow *UserActions::unrecordedView()
{
    TzRawViewWindow *view = freeView();
    const bool used = std::any_of(m_recorders.begin(), m_recorders.end(),
                                  [view](const Recorder *recorder) { return recorder->isUsing(view); });
    return used ? nullptr : view;
}

void UserActions::pause()
{
    if (const TzRawViewWindow *view = freeView())
        click(*view, "buttonPause");
}

void UserActions::fold()
{
    click(*anyView(), "checkBoxFold");
}

void UserActions::toggleFilterBar()
{
    click(*anyView(), "buttonFilter");
}

void UserActions::typeFilter()
{
    const auto text = idFilters[static_cast<std::size_t>(between(0, std::ssize(idFilters) - 1))];
    if (auto *edit = anyView()->findChild<QLineEdit *>(QStringLiteral("lineEditId")))
        edit->setText(QLatin1String(text));
}

void UserActions::chooseInFilter()
{
    static constexpr std::array combos = {"comboDevice", "comboChannel", "comboDirection"};
    const auto name = combos[static_cast<std::size_t>(between(0, std::ssize(combos) - 1))];
    auto *combo = anyView()->findChild<QComboBox *>(QLatin1String(name));
    if (!combo)
        return;
    const bool all = between(0, 1) == 0; // else hardly anything would ever be shown
    combo->setCurrentIndex(all ? 0 : between(0, combo->count() - 1));
}

void UserActions::clear()
{
    TzRawViewWindow *view = unrecordedView();
    if (!view)
        return;
    const bool asks = !view->model()->allMessages().empty();
    if (asks)
        m_boxes.expectBox(between(0, 3) == 0 ? QMessageBox::No : QMessageBox::Yes);
    click(*view, "buttonClear");
}

void UserActions::chooseDevices()
{
    TzRawViewWindow *view = unrecordedView();
    if (!view)
        return;
    const int choice = between(0, 3);
    m_boxes.expectDialog([choice](QDialog *dialog) {
        if (choice == 0) {
            dialog->reject();
            return;
        }
        click(*dialog, choice == 1 ? "buttonSelectNone" : "buttonSelectAll");
        click(*dialog, "buttonApply");
    });
    click(*view, "buttonDevices");
}

void UserActions::closeView()
{
    if (TzRawViewWindow *view = unrecordedView())
        view->parentWidget()->close();
}

void UserActions::openView()
{
    constexpr std::size_t mostViews = 4;
    if (m_workbench.views().size() >= mostViews)
        m_boxes.expectBox(QMessageBox::Ok);
    m_workbench.newView(between(0, 1) == 0 ? TzVciViewKind::can : TzVciViewKind::lin);
}

void UserActions::tile()
{
    m_workbench.window().findChild<QAction *>(QStringLiteral("actionReset_View"))->trigger();
}

void UserActions::resizeWindow()
{
    m_workbench.window().resize(between(900, 1700), between(600, 1100));
}

void UserActions::stopChannel()
{
    const int box = between(0, boxCount - 1);
    const bool isLin = between(0, 3) == 0;
    const int channel = isLin ? 0 : between(0, canChannels - 1);
    const std::uint8_t protocol = isLin ? TzVciProtocolId::lin : TzVciProtocolId::can;
    if (box == keeperBox || m_faults.isFaulty(box) || m_stopped.size() >= mostStoppedChannels ||
        !m_workbench.store().isChannelOpen(box, protocol, channel))
        return;
    if (m_workbench.manager().closeChannel(box, protocol, channel) != TzVciResult::ok)
        fail(fmt::format("box {}: channel {} of protocol {} does not close", box, channel, protocol));
    m_stopped.push_back({box, protocol, channel});
}

// One that a fault has opened since, with all the others of its box, is left as it is.
void UserActions::startChannel()
{
    if (m_stopped.empty() || m_faults.isFaulty(m_stopped.front().box))
        return;
    const Channel channel = m_stopped.front();
    m_stopped.erase(m_stopped.begin());
    if (!open(channel))
        fail(fmt::format("box {}: channel {} of protocol {} does not open", channel.box, channel.channel,
                         channel.protocol));
}

bool UserActions::open(const Channel &channel)
{
    return m_workbench.store().isChannelOpen(channel.box, channel.protocol, channel.channel) ||
           m_workbench.manager().openChannel(channel.box, channel.protocol, channel.channel) == TzVciResult::ok;
}

// The files stay: the converter has to ask about them the next time.
void UserActions::convertLog()
{
    static constexpr std::array<TextForm, 2> forms = {{{"radioCsv", "user.csv", 1}, {"radioAsc", "user.asc", 7}}};
    const TextForm &form = forms[static_cast<std::size_t>(between(0, std::ssize(forms) - 1))];
    m_boxes.expectDialog([this, &form](QDialog *dialog) {
        const auto convert = [this, &form, dialog] { convertIn(*dialog, form); };
        QTimer::singleShot(0, dialog, convert); // not within the driver, which is to answer the boxes
    });
    m_workbench.window().findChild<QAction *>(QStringLiteral("actionBLF_Converter"))->trigger();
    QFile text(QLatin1String(form.path));
    if (!text.open(QIODevice::ReadOnly) || text.readAll().count('\n') != logFrames + form.linesAround)
        fail(fmt::format("{} does not hold the frames of the log that was converted", form.path));
}

void UserActions::convertIn(QDialog &dialog, const TextForm &form)
{
    click(dialog, form.radio);
    dialog.findChild<QLineEdit *>(QStringLiteral("lineEditInput"))->setText(QLatin1String(logPath));
    dialog.findChild<QLineEdit *>(QStringLiteral("lineEditOutput"))->setText(QLatin1String(form.path));
    if (QFile::exists(QLatin1String(form.path)))
        m_boxes.expectBox(QMessageBox::Yes);
    m_boxes.expectBox(QMessageBox::Close);
    click(dialog, "buttonStart");
    dialog.reject();
}

bool UserActions::restore()
{
    for (TzVciBaseViewWindow *view : m_workbench.freeViews()) {
        if (view->isPaused())
            click(*view, "buttonPause");
        view->onUpdateFilters(TzViewIntake(view->viewKind()).devices());
    }
    bool ok = true;
    for (const Channel &channel : m_stopped)
        ok = open(channel) && ok;
    m_stopped.clear();
    return ok;
}

void UserActions::fail(const std::string &text)
{
    if (m_failure.empty())
        m_failure = text;
}

} // namespace tzsoak
