// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/SonosRoom.h"

#include "speakers/PlainOrder.h"

#include <QLocale>

namespace zofra {

size_t qHash(const SonosRoom& room, size_t seed) {
    return qHashMulti(seed, room.name, room.coordinator, room.speakers);
}

QCollator roomNameCollator(const QLocale& locale) {
    QCollator collator(locale);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

bool comesBefore(const SonosRoom& a, const SonosRoom& b, const QCollator& collator) {
    const int order = collator.compare(a.name, b.name);
    return order != 0 ? order < 0 : plainlyBefore(a.coordinator.id, b.coordinator.id);
}

} // namespace zofra
