// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/ui/TzRawViewWindow.h"

#include "ui_TzRawViewWindow.h"

#include "logging/ui/LoggerWindow.h"
#include "vci/ui/TzVciChannelSelectDialog.h"
#include "views/TzRawViewModel.h"
#include "views/TzViewTextWriter.h"
#include "views/ui/CommonCopyManager.h"
#include "views/ui/CommonFileManager.h"
#include "views/ui/TzVciViewFilterWidget.h"

#include <QAction>
#include <QHeaderView>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QScrollBar>

namespace {

constexpr int tableFontSize = 9; // points
constexpr int minimumSectionSize = 12;
// The name, which only a database knows, and in a LIN view the direction, which the colour and the frame type tell.
constexpr int hiddenColumn = 5;
// The widths of the columns leave the headers little room.
const char *const headerStyle = "QHeaderView::section { padding: 2px 1px 2px 3px; }";
// A long time with its cycle, for which the time column is made wide enough when the view is folded.
const char *const foldedTimeSample = "12345.678901[1000.00]";

QIcon resourceIcon(const char *name)
{
    return QIcon(QStringLiteral(":/resource/%1.png").arg(QLatin1String(name)));
}

QIcon pauseIcon(bool paused)
{
    return resourceIcon(paused ? "resume" : "pause");
}

} // namespace

TzRawViewWindow::TzRawViewWindow(TzVciDeviceManager *deviceManager, TzVciDeviceStore *deviceStore,
                                 TzRawViewModel *model, Common::LoggerWindow *logger,
                                 std::span<const ColumnWidth> columnWidths, QWidget *parent)
    : TzVciBaseViewWindow(deviceManager, model->family().viewKind, parent)
    , m_deviceStore(deviceStore)
    , m_ui(std::make_unique<Ui::TzRawViewWindow>())
    , m_model(model)
    , m_logger(logger)
    , m_filterWidget(new TzVciViewFilterWidget(viewKind(), this))
{
    m_model->setParent(this);
    m_logger->setParent(this, m_logger->windowFlags());
    m_ui->setupUi(this);
    setUpTable(columnWidths);
    setUpFilter();
    setUpCopying();
    reservePauseButtonWidth();
    m_ui->lableStatus->setText(intake().statusText());

    connect(this, &TzVciBaseViewWindow::sigResetUi, m_model, &TzRawViewModel::onClear);
    connect(this, &TzVciBaseViewWindow::sigUpdateVisibleRow, m_model, &TzRawViewModel::onUpdateVisibleRow);
    connect(this, &TzVciBaseViewWindow::sigPausedChanged, this, &TzRawViewWindow::showPaused);
    setTimersStopped(false);
}

TzRawViewWindow::~TzRawViewWindow()
{
    leaveDelivery(); // again, for a form that forgot it: before the model goes
}

void TzRawViewWindow::setUpTable(std::span<const ColumnWidth> columnWidths)
{
    QTableView *table = m_ui->tableView;
    table->setModel(m_model);
    QFont font = table->font();
    font.setPointSize(tableFontSize);
    table->setFont(font);
    table->setWordWrap(false);

    QHeaderView *rows = table->verticalHeader();
    rows->setMinimumSectionSize(minimumSectionSize);
    rows->setDefaultSectionSize(rowHeight);
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->hide(); // the first column counts the rows

    QHeaderView *columns = table->horizontalHeader();
    columns->setStretchLastSection(true);
    columns->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    columns->setHighlightSections(false);
    columns->setStyleSheet(QLatin1String(headerStyle));
    for (const ColumnWidth &width : columnWidths)
        table->setColumnWidth(width.column, width.pixels);
    table->setColumnHidden(hiddenColumn, true);

    setFocusProxy(table);
    table->setFocus();
    table->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(table, &QWidget::customContextMenuRequested, this, &TzRawViewWindow::onShowContextMenu);
    watchVisibleRows(table);
}

void TzRawViewWindow::setUpFilter()
{
    m_filterWidget->setupUi(m_ui->widgetFilter);
    m_model->setFilter(m_filterWidget->filter());
    connect(m_filterWidget, &TzVciViewFilterWidget::filterUpdated, m_model, &TzRawViewModel::onFilter);
}

// The keys are the table's: by each that is left out the table would copy the one cell that is current.
void TzRawViewWindow::setUpCopying()
{
    auto *copy = new QAction(m_ui->tableView);
    copy->setShortcuts(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &TzRawViewWindow::copySelected);
    m_ui->tableView->addAction(copy);
}

void TzRawViewWindow::copySelected()
{
    CommonCopyManager::copySelected(m_ui->tableView);
}

// The tool row must not jump when the button's text changes.
void TzRawViewWindow::reservePauseButtonWidth()
{
    QToolButton *button = m_ui->buttonPause;
    const QString text = button->text();
    button->setText(tr("Resume"));
    const int resumeWidth = button->sizeHint().width();
    button->setText(text);
    button->setMinimumWidth(std::max(resumeWidth, button->sizeHint().width()));
}

void TzRawViewWindow::onReceivedMessages(const std::vector<TzVciMessage> &messages)
{
    // Whatever takes this view's traffic takes it here: after the choice of channels, before the filter of the display.
    const std::span<const TzVciMessage> entered = accept(messages);
    m_model->addMessages(entered);
    m_logger->addMessages(entered);
}

void TzRawViewWindow::stopRecording()
{
    m_logger->stopRecording();
}

void TzRawViewWindow::onUpdateData()
{
    if (!isPaused())
        m_model->updateData();
}

void TzRawViewWindow::onUpdateUi()
{
    if (isPaused())
        return;
    updateVisibleRows();
    m_model->refreshVisibleRows();
    m_ui->lableStatus->setText(intake().statusText());
    if (isAtBottom())
        m_ui->tableView->scrollToBottom();
}

void TzRawViewWindow::onTimesChanged()
{
    m_model->onTimesChanged();
}

void TzRawViewWindow::onShowContextMenu(QPoint pos)
{
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    fillContextMenu(menu, m_ui->tableView->indexAt(pos));
    menu->popup(m_ui->tableView->viewport()->mapToGlobal(pos));
}

// The clicked row's texts are taken now: while the menu shows, the table may be emptied, and in a full one that moves
// other frames come to stand in the row.
void TzRawViewWindow::addCopyEntries(QMenu *menu, const QModelIndex &clicked)
{
    using Content = CommonCopyManager::Content;
    QTableView *table = m_ui->tableView;
    const auto add = [this, menu, table, isOnRow = clicked.isValid()](const QString &entry, const QString &text,
                                                                      Content content) {
        const auto copy = [table, text, content] { CommonCopyManager::copyText(table, text, content); };
        menu->addAction(resourceIcon("copy"), entry, this, copy)->setEnabled(isOnRow);
    };
    add(tr("Copy Data"), clicked.siblingAtColumn(m_model->family().dataColumn).data().toString(), Content::Data);
    TzViewTextWriter line(*m_model, TzViewTextWriter::Style::Tabbed);
    if (clicked.isValid())
        line.addRow(TzViewTextWriter::rowOf(clicked));
    add(tr("Copy Row"), line.text(), Content::Row);
    QAction *selected =
        menu->addAction(resourceIcon("copy"), tr("Copy Selected"), this, &TzRawViewWindow::copySelected);
    selected->setEnabled(table->selectionModel()->hasSelection());
    selected->setShortcut(QKeySequence::Copy);
    selected->setShortcutContext(Qt::WidgetShortcut); // told here, but it is the table that hears the key
}

void TzRawViewWindow::fillContextMenu(QMenu *menu, const QModelIndex &clicked)
{
    const auto add = [this, menu](const QString &text, const QIcon &icon, QToolButton *button, auto slot) {
        QAction *action = menu->addAction(icon, text, this, slot);
        action->setEnabled(button->isEnabled());
    };
    addCopyEntries(menu, clicked);
    menu->addSeparator();
    add(tr("Filter"), resourceIcon("filter"), m_ui->buttonFilter, &TzRawViewWindow::on_buttonFilter_clicked);
    add(tr("Clear"), resourceIcon("clear"), m_ui->buttonClear, &TzRawViewWindow::on_buttonClear_clicked);
    add(isPaused() ? tr("Resume") : tr("Pause "), pauseIcon(isPaused()), m_ui->buttonPause,
        &TzRawViewWindow::on_buttonPause_clicked);
    add(tr("Save"), resourceIcon("save"), m_ui->buttonSave, &TzRawViewWindow::on_buttonSave_clicked);
    add(tr("Devices&&Channels Filter"), resourceIcon("select"), m_ui->buttonDevices,
        &TzRawViewWindow::on_buttonDevices_clicked);
}

void TzRawViewWindow::on_buttonDevices_clicked()
{
    askLater(&TzRawViewWindow::askForDevices);
}

// The view may be destroyed while a dialog of it is up, as the program may be ended from outside. So a dialog waits for
// the event loop: within the click, a handler of the button or the menu entry, which go with the view, would still be
// under way. A second click that comes before the dialog shows asks for nothing.
void TzRawViewWindow::askLater(void (TzRawViewWindow::*ask)())
{
    if (m_asking)
        return;
    m_asking = true;
    const auto askNow = [this, ask] {
        const QPointer<TzRawViewWindow> self(this);
        (this->*ask)();
        if (self)
            m_asking = false;
    };
    QMetaObject::invokeMethod(this, askNow, Qt::QueuedConnection);
}

void TzRawViewWindow::askForDevices()
{
    setPaused(true);
    const QPointer<TzRawViewWindow> self(this);
    const QPointer<TzVciChannelSelectDialog> dialog(
        new TzVciChannelSelectDialog(m_deviceStore, viewKind(), false, &intake().devices(), this));
    connect(dialog, &TzVciChannelSelectDialog::sigUpdateFilters, this, &TzVciBaseViewWindow::onUpdateFilters);
    dialog->exec();
    delete dialog;
    if (self)
        setPaused(false);
}

void TzRawViewWindow::on_buttonRecord_clicked()
{
    m_logger->showNormal();
    m_logger->raise(); // it may lie behind the main window
    m_logger->activateWindow();
}

// The table holds still from the click on, so that the file gets what it showed then.
void TzRawViewWindow::on_buttonSave_clicked()
{
    if (m_asking)
        return;
    m_wasPausedBeforeSave = isPaused();
    setPaused(true);
    askLater(&TzRawViewWindow::askForSave);
}

void TzRawViewWindow::askForSave()
{
    const QPointer<TzRawViewWindow> self(this);
    CommonFileManager::saveTable(m_ui->tableView, this, m_model->family().savesAsc);
    if (self)
        setPaused(m_wasPausedBeforeSave);
}

void TzRawViewWindow::on_checkBoxFold_stateChanged(int state)
{
    m_model->setFold(state == Qt::Checked);
    if (state == Qt::Checked)
        widenTimeColumn();
}

// The cycle time, for which one folds, stands at the end of the text.
void TzRawViewWindow::widenTimeColumn()
{
    QTableView *table = m_ui->tableView;
    const int margin = 2 * (table->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, table) + 1);
    const int wanted = table->fontMetrics().horizontalAdvance(QLatin1String(foldedTimeSample)) + margin;
    table->setColumnWidth(TzRawViewFamily::TimeColumn,
                          std::max(wanted, table->columnWidth(TzRawViewFamily::TimeColumn)));
}

void TzRawViewWindow::on_buttonPause_clicked()
{
    setPaused(!isPaused());
}

void TzRawViewWindow::showPaused(bool paused)
{
    m_ui->buttonPause->setText(paused ? tr("Resume") : tr("Pause"));
    m_ui->buttonPause->setIcon(pauseIcon(paused));
}

void TzRawViewWindow::on_buttonClear_clicked()
{
    if (m_model->allMessages().empty())
        onClearViewWindow(viewKind());
    else
        askLater(&TzRawViewWindow::askForClear);
}

void TzRawViewWindow::askForClear()
{
    const QPointer<QMessageBox> box(new QMessageBox(QMessageBox::Question, tr("Tips"),
                                                    tr("Do you want to clear all data?"),
                                                    QMessageBox::Yes | QMessageBox::No, this));
    const int answer = box->exec();
    if (!box) // gone with the view, of which nothing may be touched any more
        return;
    delete box;
    if (answer == QMessageBox::Yes)
        onClearViewWindow(viewKind());
}

void TzRawViewWindow::on_buttonFilter_clicked()
{
    const bool show = m_ui->widgetFilter->isHidden();
    m_ui->widgetFilter->setVisible(show);
    m_filterWidget->setEnabled(show);
}
