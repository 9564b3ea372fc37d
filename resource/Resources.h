// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Makes everything below ":/resource" known to the toolkit: the icons as NAME.png with a NAME@2x.png for high-density
/// displays, ":/resource/logo.ico" and ":/resource/style.qss".
///
/// A static library's resources are not registered by themselves; applyWorkbenchStyle() calls this, and whoever loads
/// an icon without it calls it first. May be called any number of times, on any thread before icons are loaded.
void tzInitResources();
