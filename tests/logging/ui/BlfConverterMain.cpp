// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/ui/TestBlfConverterBusy.h"
#include "tests/logging/ui/TestBlfConverterDialog.h"
#include "tests/logging/ui/TestBlfConverterRun.h"
#include "tests/support/QtTestMain.h"

TZ_QTEST_MAIN(TestBlfConverterDialog, TestBlfConverterRun, TestBlfConverterBusy)
