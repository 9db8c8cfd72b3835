// SPDX-License-Identifier: GPL-3.0-or-later
// The least memory that waiting takes: a program without a face that is linked with every library that the
// radio is linked with, has its name on the bus, and keeps the one secure connection that polling needs.
//
//     floor_linked ADDRESS AUTHORITY
#include <QCoreApplication>
#include <QDBusConnection>

#include <curl/curl.h>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    if (argc != 3 || !QDBusConnection::sessionBus().registerService(QStringLiteral("be.zofra.LinkedFloor")))
        return 2;
    ::curl_global_init(CURL_GLOBAL_DEFAULT);
    CURL* request = ::curl_easy_init();
    ::curl_easy_setopt(request, CURLOPT_URL, argv[1]);
    ::curl_easy_setopt(request, CURLOPT_CAINFO, argv[2]);
    ::curl_easy_setopt(
        request, CURLOPT_WRITEFUNCTION,
        +[](char* /*bytes*/, std::size_t size, std::size_t count, void* /*unused*/) { return size * count; });
    if (::curl_easy_perform(request) != CURLE_OK)
        return 1;
    return QCoreApplication::exec();
}
