// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/LoadingText.h"

namespace zofra {

QString loadingText(AppLanguage language) {
    switch (language) {
    case AppLanguage::en:
        return QStringLiteral("Loading...");
    case AppLanguage::nl:
        return QStringLiteral("Laden...");
    case AppLanguage::fr:
        return QStringLiteral("Chargement...");
    case AppLanguage::de:
        return QStringLiteral("Lädt...");
    }
    Q_UNREACHABLE();
    return {};
}

} // namespace zofra
