// SPDX-License-Identifier: GPL-3.0-or-later
// The least that playing costs with this engine: libmpv with the radio's options, and a plain connection that
// it reads from.
//
//     engine_floor HOST PATH
//
// Plays when a line comes on standard input, so that the time to sound is that of the engine and the server
// alone.
#include "platform/linux/audio/MpvLibrary.h"

#include <array>
#include <clocale>
#include <cstdio>
#include <netdb.h>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

namespace {

std::string host;
std::string path;

/// A connection to the server that has read its headers; -1 without one.
int connected() {
    addrinfo wanted{};
    wanted.ai_family = AF_INET;
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), "80", &wanted, &found) != 0)
        return -1;
    const int connection = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isThere = ::connect(connection, found->ai_addr, found->ai_addrlen) == 0;
    ::freeaddrinfo(found);
    const std::string request = "GET " + path + " HTTP/1.0\r\nHost: " + host + "\r\n\r\n";
    if (!isThere || ::send(connection, request.data(), request.size(), MSG_NOSIGNAL) < 0)
        return -1;
    std::string headers;
    for (char next = 0; !headers.ends_with("\r\n\r\n"); headers += next) {
        if (::recv(connection, &next, 1, 0) != 1)
            return -1;
    }
    return connection;
}

int open(void* /*unused*/, char* /*address*/, mpv_stream_cb_info* info) {
    const int connection = connected();
    if (connection < 0)
        return MPV_ERROR_LOADING_FAILED;
    info->cookie = new int(connection);
    info->read_fn = [](void* cookie, char* buffer, std::uint64_t size) -> std::int64_t {
        return ::recv(*static_cast<int*>(cookie), buffer, size, 0);
    };
    info->close_fn = [](void* cookie) {
        ::close(*static_cast<int*>(cookie));
        delete static_cast<int*>(cookie);
    };
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    host = argv[1];
    path = argv[2];
    std::setlocale(LC_NUMERIC, "C");
    const auto library = zofra::MpvLibrary::load("libmpv.so.2");
    const auto handle = library.and_then([](const auto& mpv) { return mpv->start(); });
    if (!handle || (*library)->streamCbAddRo(*handle, "floor", nullptr, &open) < 0)
        return 1;
    std::puts("ready");
    std::fflush(stdout);
    static_cast<void>(std::getchar());
    std::array<const char*, 3> load{"loadfile", "floor://", nullptr};
    (*library)->commandAsync(*handle, 0, load.data());
    ::pause();
}
