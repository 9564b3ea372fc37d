// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QAbstractItemModel;
class QDateTime;

/// The rows of a CAN view as an ASC log, with the columns of TzRawViewFamily. Length is decimal and every frame an
/// ordinary line, as the texts of the view tell no more.
/// @param now  date in the head of the log
QString tzViewAscText(const QAbstractItemModel &model, const QDateTime &now);
