// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace zofra {

/// Tells screen readers what the panel's parts are, where the toolkit could not know: the panel is a window,
/// drawings are only looked at, menu buttons open menus. May be called again.
void installPanelAccess();

} // namespace zofra
