// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the shells' completions and the manual page: WriteOptionPages TEMPLATE FOLDER. The line @OPTIONS@ of
// the template is replaced.
#include "app/OptionTable.h"

#include <QDir>
#include <QFile>

#include <cstdio>

namespace {

bool write(const QString& path, const QString& text) {
    QFile file(path);
    const QByteArray bytes = text.toUtf8();
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

} // namespace

int main(int argc, char** argv) {
    QFile page(QString::fromLocal8Bit(argc == 3 ? argv[1] : ""));
    if (!page.open(QIODevice::ReadOnly)) {
        std::fputs("usage: WriteOptionPages TEMPLATE FOLDER\n", stderr);
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[2]) + QLatin1Char('/');
    const QString manual =
        QString::fromUtf8(page.readAll())
            .replace(QLatin1String("@OPTIONS@\n"), zofra::manualOptions())
            .replace(QLatin1String("@STATIONS@"), zofra::stationNames().join(QStringLiteral(", ")));
    const bool isWritten = QDir().mkpath(folder) && write(folder + QStringLiteral("zofrazofra.1"), manual) &&
                           write(folder + QStringLiteral("zofrazofra.bash"), zofra::bashCompletion()) &&
                           write(folder + QStringLiteral("_zofrazofra"), zofra::zshCompletion()) &&
                           write(folder + QStringLiteral("zofrazofra.fish"), zofra::fishCompletion());
    if (!isWritten)
        std::fprintf(stderr, "%s could not be written\n", qUtf8Printable(folder));
    return isWritten ? 0 : 1;
}
