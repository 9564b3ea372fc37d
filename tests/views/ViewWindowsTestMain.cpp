// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/QtTestMain.h"
#include "tests/views/CopyManagerTest.h"
#include "tests/views/FileManagerTest.h"
#include "tests/views/RawViewDialogsTest.h"
#include "tests/views/RawViewSnapshotTest.h"
#include "tests/views/RawViewTicksTest.h"
#include "tests/views/RawViewWindowTest.h"
#include "tests/views/ViewFilterWidgetTest.h"

TZ_QTEST_MAIN(TestViewFilterWidget, TestRawViewWindow, TestRawViewDialogs, TestRawViewTicks, TestCopyManager,
              TestFileManager, TestRawViewSnapshot)
