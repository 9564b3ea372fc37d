// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/logging/ui/TestLoggerPreview.h"
#include "tests/logging/ui/TestLoggerRecording.h"
#include "tests/logging/ui/TestLoggerWindow.h"
#include "tests/support/QtTestMain.h"

TZ_QTEST_MAIN(TestLoggerPreview, TestLoggerWindow, TestLoggerRecording)
