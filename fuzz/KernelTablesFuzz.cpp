// SPDX-License-Identifier: GPL-3.0-or-later
// What the kernel says of the computer's interfaces, addresses and routes, however odd: containers and
// network managers make tables that nobody has seen before. The bytes of its news are thrown away unread,
// so what counts is what is looked up after them.
#include "fuzz/FuzzBytes.h"
#include "fuzz/FuzzInput.h"
#include "platform/linux/lan/LinuxLocalNetwork.h"
#include "platform/linux/lan/NetworkChange.h"
#include "speakers/InterfaceInfo.h"

#include <QUrl>

#include <algorithm>
#include <arpa/inet.h>
#include <bit>
#include <dlfcn.h>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <netinet/in.h>
#include <vector>

namespace {

using namespace zofra;

/// Room for an address of any family.
using Address = std::unique_ptr<sockaddr_storage>;

/// A table of the kernel's, as the C library hands it out.
class Interfaces {
public:
    explicit Interfaces(fuzz::Input& input) {
        const auto count = input.byte() % 24;
        for (int i = 0; i < count && !input.isEmpty(); ++i) {
            m_names.push_back(input.byte() % 4 == 0 ? input.line() : QByteArray("eth0"));
            auto& entry = *m_entries.emplace_back(std::make_unique<ifaddrs>());
            entry.ifa_name = m_names.back().data();
            entry.ifa_flags = static_cast<unsigned int>(input.number());
            if (input.byte() % 2 == 0)
                entry.ifa_flags = IFF_UP | IFF_RUNNING | IFF_BROADCAST;
            const auto family = input.oneOf({AF_INET, AF_INET, AF_INET6, AF_PACKET, AF_UNSPEC});
            entry.ifa_addr = family == AF_UNSPEC ? nullptr : address(family, input);
            entry.ifa_netmask = input.byte() % 4 == 0 ? nullptr : address(family, input);
            entry.ifa_broadaddr = input.byte() % 4 == 0   ? nullptr
                                  : input.byte() % 4 == 0 ? entry.ifa_addr
                                                          : address(family, input);
        }
        link();
    }
    void reverse() {
        std::reverse(m_entries.begin(), m_entries.end());
        link();
    }
    [[nodiscard]] ifaddrs* first() const { return m_entries.empty() ? nullptr : m_entries.front().get(); }
    [[nodiscard]] const std::vector<std::unique_ptr<ifaddrs>>& entries() const { return m_entries; }

private:
    sockaddr* address(int family, fuzz::Input& input) {
        auto& made = *m_addresses.emplace_back(std::make_unique<sockaddr_storage>());
        made.ss_family = static_cast<sa_family_t>(family);
        if (family == AF_INET)
            reinterpret_cast<sockaddr_in&>(made).sin_addr.s_addr = static_cast<in_addr_t>(input.number());
        else if (family == AF_INET6)
            for (auto& byte : reinterpret_cast<sockaddr_in6&>(made).sin6_addr.s6_addr)
                byte = input.byte();
        return reinterpret_cast<sockaddr*>(&made);
    }
    void link() {
        for (std::size_t i = 0; i < m_entries.size(); ++i)
            m_entries[i]->ifa_next = i + 1 < m_entries.size() ? m_entries[i + 1].get() : nullptr;
    }

    std::vector<QByteArray> m_names;
    std::vector<Address> m_addresses;
    std::vector<std::unique_ptr<ifaddrs>> m_entries;
};

/// What the kernel says while an input is being looked at; the true state otherwise.
const Interfaces* shown = nullptr;

std::optional<std::uint32_t> numberOf(const QString& ip) {
    in_addr address{};
    return ::inet_pton(AF_INET, ip.toUtf8().constData(), &address) == 1 ? std::optional(ntohl(address.s_addr))
                                                                        : std::nullopt;
}

void checkSearched(const InterfaceInfo& interface, const QString& host) {
    const auto own = numberOf(interface.ip);
    fuzz::require(own && interface.prefixLength >= 0 && interface.prefixLength <= 32);
    fuzz::require(interface.reaches(interface.ip) && interface.broadcast != interface.ip);
    const auto other = numberOf(host);
    const auto mask =
        interface.prefixLength == 0 ? 0U : ~0U << static_cast<unsigned>(32 - interface.prefixLength);
    fuzz::require(interface.reaches(host) == (other && ((*own ^ *other) & mask) == 0));
}

void checkInterfaces(Interfaces& table, const QString& host) {
    const auto addresses = LinuxLocalNetwork().interfaceAddresses();
    fuzz::require(addresses.size() == table.entries().size());
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        const auto& entry = *table.entries()[i];
        const auto& found = addresses[i];
        fuzz::require(found.flags == entry.ifa_flags &&
                      found.family.has_value() == (entry.ifa_addr != nullptr));
        fuzz::require(found.ip.isEmpty() == (found.family != AF_INET && found.family != AF_INET6));
    }
    for (const auto& interface : activeIPv4Interfaces(addresses))
        checkSearched(interface, host);
    // The order in which the kernel lists things is no change.
    const auto before = NetworkChange::snapshot();
    table.reverse();
    fuzz::require(NetworkChange::snapshot() == before);
}

void checkRoutes(const QByteArray& four, const QByteArray& six) {
    const auto routes = NetworkChange::defaultRoutes(four, six);
    fuzz::require(routes.size() <= four.count('\n') + six.count('\n') + 2);
    for (const auto& route : routes)
        fuzz::require(route.startsWith("route ") && route.count(' ') == 2 && !route.contains('\n'));
    auto apart = NetworkChange::defaultRoutes(four, {});
    fuzz::require(apart + NetworkChange::defaultRoutes({}, six) == routes);
}

} // namespace

extern "C" int getifaddrs(ifaddrs** list) {
    static const auto real = reinterpret_cast<int (*)(ifaddrs**)>(::dlsym(RTLD_NEXT, "getifaddrs"));
    if (!shown)
        return real(list);
    *list = shown->first();
    return 0;
}

extern "C" void freeifaddrs(ifaddrs* list) {
    static const auto real = reinterpret_cast<void (*)(ifaddrs*)>(::dlsym(RTLD_NEXT, "freeifaddrs"));
    if (!shown)
        real(list);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    Interfaces table(input);
    // As a device may name another in an address.
    const auto host = QUrl(QStringLiteral("http://") + input.text() + u'/').host();
    const auto four = input.until("\n--\n");
    const auto six = input.until("\n--\n");
    shown = &table;
    checkInterfaces(table, host);
    shown = nullptr;
    checkRoutes(four, six);
    return 0;
}
