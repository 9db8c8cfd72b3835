// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Terminal.h"

#include <cstdio>

namespace zofra {

int refuse(ExitStatus status, const QString& line) {
    std::fprintf(stderr, "zofrazofra: %s\n", qUtf8Printable(line));
    return status;
}

int print(const QString& text) {
    std::printf("%s\n", qUtf8Printable(text));
    return std::fflush(stdout) == 0 ? fine : failed;
}

} // namespace zofra
