// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "platform/linux/DesktopEntry.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const QByteArray bytes = fuzz::bytes(data, size);
    static_cast<void>(desktopentry::mainGroup(bytes));
    // A name that we write is the name that is read.
    const QString text = QString::fromUtf8(bytes);
    if (text.contains(QChar::Null))
        return 0;
    const QByteArray file = "[Desktop Entry]\nName=" + desktopentry::escapedString(text).toUtf8() + '\n';
    fuzz::require(desktopentry::mainGroup(file).value(QStringLiteral("Name")) == text);
    return 0;
}
