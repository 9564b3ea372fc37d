// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/app/TestDebugLogDialog.h"
#include "tests/app/TestTZVciTimeDialog.h"
#include "tests/app/TestTzVciVersionDialog.h"
#include "tests/support/QtTestMain.h"

TZ_QTEST_MAIN(TestDebugLogDialog, TestTZVciTimeDialog, TestTzVciVersionDialog)
