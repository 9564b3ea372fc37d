// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/TzRawFrameFilter.h"

#include "vci/TzVciMessage.h"

#include <QMap>
#include <QObject>

#include <cstdint>
#include <memory>

class QComboBox;
class QLineEdit;
class QWidget;

/// The filter bar of a raw view: puts its controls into a container that the window lends, and keeps the filter that
/// they describe. UI thread.
class TzVciViewFilterWidget : public QObject
{
    Q_OBJECT
public:
    /// @param viewKind  TzVciViewKind; its family chooses the texts and the directions
    explicit TzVciViewFilterWidget(std::uint8_t viewKind, QObject *parent = nullptr);

    /// Hides the container and builds the controls in it, which it then owns. To be called once.
    void setupUi(QWidget *container);
    /// False lets everything pass, whatever the controls say; they keep their contents.
    void setEnabled(bool on);
    bool isActive() const { return m_filter->isActive(); }
    bool passesCan(const TzVciMessage &message) const { return m_filter->passesCan(message); }
    bool passesLin(const TzVciMessage &message) const { return m_filter->passesLin(message); }
    /// The filter itself, for a model; it changes before filterUpdated() is emitted.
    std::shared_ptr<const TzRawFrameFilter> filter() const { return m_filter; }

Q_SIGNALS:
    void filterUpdated();

public Q_SLOTS:
    void onFilterConditionChanged();

private:
    bool isLin() const;
    QLineEdit *createIdEdit();
    QComboBox *createDeviceCombo();
    QComboBox *createChannelCombo();
    QComboBox *createDirectionCombo();
    QComboBox *createCombo(const QString &objectName, const QString &toolTip, const QString &allText);

    const std::uint8_t m_viewKind;
    QWidget *m_container = nullptr;
    QMap<int, QWidget *> m_controls; // by their place in the bar
    QLineEdit *m_lineEditId = nullptr;
    QComboBox *m_comboDevice = nullptr;
    QComboBox *m_comboChannel = nullptr;
    QComboBox *m_comboDirection = nullptr;
    const std::shared_ptr<TzRawFrameFilter> m_filter;
};
