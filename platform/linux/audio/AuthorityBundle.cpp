// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/AuthorityBundle.h"

#include <QFile>

#include <array>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace zofra {

namespace {

/// A system's bundle has some 250 kB.
constexpr qint64 mostBytes = 8 * 1024 * 1024;

std::optional<QByteArray> contentsOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    auto contents = file.read(mostBytes + 1);
    if (file.error() != QFileDevice::NoError || contents.size() > mostBytes)
        return std::nullopt;
    return contents;
}

bool writeAll(int descriptor, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const auto count =
            ::write(descriptor, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (count <= 0)
            return false;
        done += count;
    }
    return true;
}

} // namespace

AuthorityBundle::AuthorityBundle(std::optional<QString> extraAuthorityFile, SystemLog& log)
    : m_extraAuthorityFile(std::move(extraAuthorityFile))
    , m_log(log) {}

AuthorityBundle::~AuthorityBundle() {
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

QByteArray AuthorityBundle::file() {
    const std::scoped_lock lock(m_mutex);
    if (!m_file)
        m_file = makeFile();
    return *m_file;
}

QByteArray AuthorityBundle::systemFile() {
    const auto readable = [](const QByteArray& path) {
        return !path.isEmpty() && ::access(path.constData(), R_OK) == 0;
    };
    if (const auto named = qgetenv("SSL_CERT_FILE"); readable(named))
        return named;
    // As Debian and Arch, Fedora, openSUSE and Alpine have it.
    constexpr std::array usual{"/etc/ssl/certs/ca-certificates.crt", "/etc/pki/tls/certs/ca-bundle.crt",
                               "/etc/ssl/ca-bundle.pem", "/etc/ssl/cert.pem"};
    for (const char* path : usual) {
        if (readable(path))
            return path;
    }
    return {};
}

QByteArray AuthorityBundle::makeFile() {
    const auto system = systemFile();
    if (!m_extraAuthorityFile)
        return system;
    const auto extra = contentsOf(*m_extraAuthorityFile);
    if (!extra || !extra->contains("-----BEGIN CERTIFICATE-----")) {
        m_log.log(QStringLiteral("The authorities in %1 cannot be read; streams are checked without them")
                      .arg(*m_extraAuthorityFile));
        return system;
    }
    const auto own =
        system.isEmpty() ? QByteArray() : contentsOf(QFile::decodeName(system)).value_or(QByteArray());
    m_descriptor = ::memfd_create("zofrazofra-authorities", MFD_CLOEXEC);
    if (m_descriptor < 0 || !writeAll(m_descriptor, own + '\n' + *extra + '\n')) {
        m_log.log(
            QStringLiteral("The authorities in %1 cannot be joined with the system's; streams are checked "
                           "without them")
                .arg(*m_extraAuthorityFile));
        return system;
    }
    return "/proc/self/fd/" + QByteArray::number(m_descriptor);
}

} // namespace zofra
