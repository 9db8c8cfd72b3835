// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/FuzzBytes.h"
#include "platform/IniDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zofra;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    IniDocument document(bytes);
    fuzz::require(document.bytes() == bytes);
    fuzz::require(decodedIniValue(encodedIniValue(bytes)) == bytes);
    fuzz::require(!encodedIniValue(bytes).contains('\n'));
    // Whatever the file was: what is written is read again, and a second writing changes nothing more.
    document.setValue("zofra_volume", "0.5");
    fuzz::require(document.value("zofra_volume") == QByteArray("0.5"));
    const QByteArray once = document.bytes();
    IniDocument again(once);
    fuzz::require(again.value("zofra_volume") == QByteArray("0.5"));
    again.setValue("zofra_volume", "0.5");
    fuzz::require(again.bytes() == once);
    again.dropDamage();
    fuzz::require(!again.isDamaged());
    return 0;
}
