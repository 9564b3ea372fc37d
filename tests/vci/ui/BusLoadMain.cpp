// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/QtTestMain.h"
#include "tests/vci/ui/TestBusLoadTable.h"
#include "tests/vci/ui/TestBusLoadView.h"

TZ_QTEST_MAIN(TestBusLoadTable, TestBusLoadView)
