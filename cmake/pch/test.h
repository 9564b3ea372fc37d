// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets.h"

#include <QtTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
