// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/QtTestMain.h"
#include "tests/vci/ui/TestCanConfigDialog.h"
#include "tests/vci/ui/TestChannelSelectDialog.h"
#include "tests/vci/ui/TestConfigDialog.h"
#include "tests/vci/ui/TestConfigDialogActions.h"
#include "tests/vci/ui/TestConfigDialogWithBox.h"
#include "tests/vci/ui/TestDeviceWidget.h"
#include "tests/vci/ui/TestInputBlocker.h"

TZ_QTEST_MAIN(TestCanConfigDialog, TestChannelSelectDialog, TestConfigDialog, TestConfigDialogActions,
              TestConfigDialogWithBox, TestDeviceWidget, TestInputBlocker)
