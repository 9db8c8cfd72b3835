// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/HttpStream.h"

#include "platform/linux/net/CurlGlobal.h"
#include "platform/linux/net/CurlRules.h"

#include <QUrl>

#include <algorithm>
#include <atomic>
#include <curl/curl.h>
#include <optional>
#include <sys/socket.h>
#include <utility>

namespace zofra {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// What is taken out of the network before the reader asks for it.
constexpr qsizetype mostPending = 131'072;
/// Of all responses together, redirects included.
constexpr std::size_t maxHeaderBytes = 131'072;

} // namespace

/// The libcurl handles of one stream. All of it on the reader's thread, but for `cancel`.
class HttpStream::Transfer {
public:
    Transfer(const QByteArray& url, const Settings& settings)
        : m_patience(settings.patience) {
        CurlGlobal::initialise();
        const CurlGlobal::Pass pass;
        m_multi.reset(curl_multi_init());
        m_easy.reset(curl_easy_init());
        if (!m_multi || !m_easy) {
            m_outcome = CURLE_FAILED_INIT;
            return;
        }
        setUp(url, settings);
        if (curl_multi_add_handle(m_multi.get(), m_easy.get()) == CURLM_OK)
            m_isAdded = true;
        else
            m_outcome = CURLE_FAILED_INIT;
    }
    ~Transfer() {
        const CurlGlobal::Pass pass;
        if (m_isAdded)
            curl_multi_remove_handle(m_multi.get(), m_easy.get());
        m_easy.reset();
        m_multi.reset();
    }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    std::int64_t read(char* buffer, std::size_t size) {
        const auto deadline = steady_clock::now() + m_patience;
        while (!m_isCancelled) {
            if (hasPending())
                return takePending(buffer, size);
            if (m_outcome)
                return *m_outcome == CURLE_OK ? 0 : -1;
            step();
            if (hasPending() || m_outcome)
                continue;
            const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
            if (left <= milliseconds(0))
                m_outcome = CURLE_OPERATION_TIMEDOUT;
            else
                curl_multi_poll(m_multi.get(), nullptr, 0, static_cast<int>(left.count()), nullptr);
        }
        return -1;
    }

    void cancel() {
        m_isCancelled = true;
        if (m_multi)
            curl_multi_wakeup(m_multi.get());
    }

private:
    struct EasyCloser {
        void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
    };
    struct MultiCloser {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };

    void setUp(const QByteArray& url, const Settings& settings) {
        auto* const easy = m_easy.get();
        curl_easy_setopt(easy, CURLOPT_URL, url.constData());
        curl_easy_setopt(easy, CURLOPT_FAILONERROR, 1L);
        // Old streaming servers have a status line of their own.
        curl_easy_setopt(easy, CURLOPT_HTTP200ALIASES, m_statusLines.get());
        curl_easy_setopt(easy, CURLOPT_USERAGENT, settings.userAgent.constData());
        curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_patience.count()));
        m_rules.apply(easy, QUrl::fromEncoded(url), settings.authorities);
        setUpCallbacks();
    }

    void setUpCallbacks() {
        auto* const easy = m_easy.get();
        curl_easy_setopt(
            easy, CURLOPT_WRITEFUNCTION, +[](const char* bytes, std::size_t, std::size_t size, void* self) {
                return static_cast<Transfer*>(self)->receive(bytes, size);
            });
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
        curl_easy_setopt(
            easy, CURLOPT_HEADERFUNCTION, +[](const char*, std::size_t, std::size_t size, void* self) {
                return static_cast<Transfer*>(self)->receiveHeader(size);
            });
        curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
        curl_easy_setopt(
            easy, CURLOPT_OPENSOCKETFUNCTION, +[](void*, curlsocktype, curl_sockaddr* address) -> int {
                return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
            });
    }

    void step() {
        const CurlGlobal::Pass pass;
        if (std::exchange(m_isHeld, false))
            curl_easy_pause(m_easy.get(), CURLPAUSE_CONT);
        int running = 0;
        if (curl_multi_perform(m_multi.get(), &running) != CURLM_OK)
            m_outcome = CURLE_FAILED_INIT;
        int left = 0;
        while (const auto* message = curl_multi_info_read(m_multi.get(), &left)) {
            if (message->msg == CURLMSG_DONE)
                m_outcome = message->data.result;
        }
    }

    std::size_t receive(const char* bytes, std::size_t size) {
        if (m_pending.size() >= mostPending) {
            m_isHeld = true;
            return CURL_WRITEFUNC_PAUSE;
        }
        m_pending.append(bytes, static_cast<qsizetype>(size));
        return size;
    }

    std::size_t receiveHeader(std::size_t size) {
        m_headerBytes += size;
        return m_headerBytes <= maxHeaderBytes ? size : 0;
    }

    [[nodiscard]] bool hasPending() const { return m_taken < m_pending.size(); }
    std::int64_t takePending(char* buffer, std::size_t size) {
        const auto count = std::min(static_cast<qsizetype>(std::min<std::size_t>(size, mostPending)),
                                    m_pending.size() - m_taken);
        std::copy_n(m_pending.constData() + m_taken, count, buffer);
        m_taken += count;
        if (!hasPending()) {
            m_pending.resize(0); // Keeps what is allocated.
            m_taken = 0;
        }
        return count;
    }

    struct ListCloser {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    const milliseconds m_patience;
    std::unique_ptr<curl_slist, ListCloser> m_statusLines{curl_slist_append(nullptr, "ICY 200 OK")};
    CurlRules m_rules;
    std::unique_ptr<CURLM, MultiCloser> m_multi;
    std::unique_ptr<CURL, EasyCloser> m_easy;
    bool m_isAdded = false;
    QByteArray m_pending;
    qsizetype m_taken = 0;
    std::size_t m_headerBytes = 0;
    /// libcurl waits for us to take what is pending.
    bool m_isHeld = false;
    std::optional<CURLcode> m_outcome;
    std::atomic<bool> m_isCancelled{false};
};

TrustedAuthorities HttpStream::authorities(const std::optional<QString>& extraAuthorityFile) {
    CurlGlobal::initialise();
    return TrustedAuthorities::find(extraAuthorityFile,
                                    QByteArray(curl_version_info(CURLVERSION_NOW)->cainfo));
}

HttpStream::HttpStream(const QByteArray& url, const Settings& settings)
    : m_transfer(std::make_unique<Transfer>(url, settings)) {}

HttpStream::~HttpStream() = default;

std::int64_t HttpStream::read(char* buffer, std::size_t size) {
    return m_transfer->read(buffer, size);
}

void HttpStream::cancel() {
    m_transfer->cancel();
}

} // namespace zofra
