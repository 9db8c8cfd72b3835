// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace zofra {

class LanguageManager;
class RadioPlayer;
class RadioViewModel;
class SonosManager;

/// The four objects that the program consists of. State is read from them by `RadioStateSource`, and they are
/// moved by `RadioControls`; nobody else in `app/` touches them.
struct RadioObjects {
    RadioViewModel& viewModel;
    RadioPlayer& player;
    SonosManager& sonos;
    LanguageManager& languages;
};

} // namespace zofra
