// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ZofraMenuBarApp.h"

namespace zofra {

// Each is made when it is first used, with the parts of the running program, and never destroyed.

LanguageManager& LanguageManager::shared() {
    static LanguageManager* const instance = ZofraMenuBarApp::current().makeLanguages().release();
    return *instance;
}

RadioPlayer& RadioPlayer::shared() {
    static RadioPlayer* const instance = ZofraMenuBarApp::current().makePlayer().release();
    return *instance;
}

SonosManager& SonosManager::shared() {
    static SonosManager* const instance = ZofraMenuBarApp::current().makeSonos().release();
    return *instance;
}

} // namespace zofra
