// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/RegularFile.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>

namespace zofra {

Result<std::optional<QByteArray>> readRegularFile(const QString& path, qint64 maxBytes) {
    std::error_code error;
    const auto status = std::filesystem::status(QFile::encodeName(path).toStdString(), error);
    if (error == std::errc::no_such_file_or_directory)
        return std::nullopt;
    if (error)
        return failure(QString::fromStdString(error.message()));
    if (status.type() == std::filesystem::file_type::directory)
        return failure(u"Is a directory"_qs);
    if (status.type() != std::filesystem::file_type::regular)
        return failure(u"Not a regular file"_qs);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failure(file.errorString());
    auto bytes = file.read(maxBytes);
    if (file.error() != QFileDevice::NoError)
        return failure(file.errorString());
    return bytes;
}

bool isLink(const QString& path) {
    return QFileInfo(path).isSymLink();
}

} // namespace zofra
