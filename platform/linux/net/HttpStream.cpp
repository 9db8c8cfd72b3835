// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/net/HttpStream.h"

#include "platform/linux/net/CurlGlobal.h"
#include "platform/linux/net/CurlHandle.h"

#include <QUrl>

#include <algorithm>
#include <atomic>
#include <optional>
#include <utility>

namespace zofra {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

/// What is taken out of the network before the reader asks for it.
constexpr qsizetype mostPending = 131'072;

} // namespace

QByteArray userAgent() {
    return "ZofraZofra/" ZOFRA_VERSION;
}

/// The libcurl handles of one stream. All of it on the reader's thread, but for `cancel`.
class HttpStream::Transfer {
public:
    Transfer(const QByteArray& url, const Settings& settings)
        : m_patience(settings.patience)
        , m_handle(QUrl::fromEncoded(url), settings.authorities) {
        if (m_multi && !m_handle.refusal())
            setUp(url, settings);
        if (!m_isAdded)
            m_outcome = CURLE_FAILED_INIT;
    }
    ~Transfer() {
        const CurlGlobal::Pass pass;
        if (m_isAdded)
            curl().multiRemoveHandle(m_multi.get(), m_handle.easy());
        m_handle.close();
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
                curl().multiPoll(m_multi.get(), nullptr, 0, static_cast<int>(left.count()), nullptr);
        }
        return -1;
    }

    void cancel() {
        m_isCancelled = true;
        if (m_multi)
            curl().multiWakeup(m_multi.get());
    }

private:
    void setUp(const QByteArray& url, const Settings& settings) {
        m_handle.set(CURLOPT_URL, url.constData());
        m_handle.set(CURLOPT_FAILONERROR, 1L);
        // Old streaming servers have a status line of their own.
        m_statusLines.reset(curl().slistAppend(nullptr, "ICY 200 OK"));
        m_handle.set(CURLOPT_HTTP200ALIASES, m_statusLines.get());
        m_handle.set(CURLOPT_USERAGENT, settings.userAgent.constData());
        m_handle.set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_patience.count()));
        m_handle.set(
            CURLOPT_WRITEFUNCTION, +[](const char* bytes, std::size_t, std::size_t size, void* self) {
                return static_cast<Transfer*>(self)->receive(bytes, size);
            });
        m_handle.set(CURLOPT_WRITEDATA, this);
        m_isAdded = curl().multiAddHandle(m_multi.get(), m_handle.easy()) == CURLM_OK;
    }

    void step() {
        const CurlGlobal::Pass pass;
        if (std::exchange(m_isHeld, false))
            curl().easyPause(m_handle.easy(), CURLPAUSE_CONT);
        int running = 0;
        if (curl().multiPerform(m_multi.get(), &running) != CURLM_OK)
            m_outcome = CURLE_FAILED_INIT;
        int left = 0;
        while (const auto* message = curl().multiInfoRead(m_multi.get(), &left)) {
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

    const milliseconds m_patience;
    std::unique_ptr<curl_slist, void (*)(curl_slist*)> m_statusLines{nullptr, curl().slistFreeAll};
    std::unique_ptr<CURLM, CURLMcode (*)(CURLM*)> m_multi{curl().multiInit(), curl().multiCleanup};
    CurlHandle m_handle;
    bool m_isAdded = false;
    QByteArray m_pending;
    qsizetype m_taken = 0;
    /// libcurl waits for us to take what is pending.
    bool m_isHeld = false;
    std::optional<CURLcode> m_outcome;
    std::atomic<bool> m_isCancelled{false};
};

HttpStream::HttpStream(const QByteArray& url, const Settings& settings) {
    CurlGlobal::initialise();
    const CurlGlobal::Pass pass;
    m_transfer = std::make_unique<Transfer>(url, settings);
}

HttpStream::~HttpStream() = default;

std::int64_t HttpStream::read(char* buffer, std::size_t size) {
    return m_transfer->read(buffer, size);
}

void HttpStream::cancel() {
    m_transfer->cancel();
}

} // namespace zofra
