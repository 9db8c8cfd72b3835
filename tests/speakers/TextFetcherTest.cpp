// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/TextFetcher.h"

#include "tests/speakers/Background.h"
#include "tests/speakers/Samples.h"
#include "tests/support/PrintQt.h"

#include <chrono>
#include <gtest/gtest.h>
#include <thread>

namespace zofra {
namespace {

using test::answered;
using test::Background;
using test::failed;

HttpRequest request(int host, std::chrono::milliseconds timeout = std::chrono::seconds(3)) {
    HttpRequest result;
    result.url = test::descriptionUrl(host);
    result.timeout = timeout;
    return result;
}

class TextFetcherTest : public testing::Test {
protected:
    std::optional<QString> fetch(const HttpResult& result) {
        background.http.automatic = [result](const HttpRequest&) { return result; };
        return fetcher.fetchText(request(5));
    }

    Background background;
    TextFetcher fetcher{background.state};
};

TEST_F(TextFetcherTest, GivesTheBodyOfStatus200) {
    EXPECT_EQ(fetch(answered(200, QStringLiteral("Küche"))), QStringLiteral("Küche"));
    EXPECT_EQ(fetch(answered(200)), QString()) << "an empty body is a text";
}

TEST_F(TextFetcherTest, RepairsBytesThatAreNoText) {
    EXPECT_EQ(fetch(HttpResponse{200, "a\xFF"}), QStringLiteral("a\uFFFD"));
}

TEST_F(TextFetcherTest, GivesNothingOfAnyOtherStatusOrFailure) {
    for (const int status : {201, 204, 206, 301, 403, 404, 500})
        EXPECT_FALSE(fetch(answered(status, QStringLiteral("text")))) << status;
    EXPECT_FALSE(fetch(failed(HttpError::Code::tooLarge)));
    EXPECT_FALSE(fetch({}));
    EXPECT_TRUE(background.log.lines.empty()) << "nothing of it is logged";
}

TEST_F(TextFetcherTest, NotesADenial) {
    EXPECT_FALSE(fetch(failed(HttpError::Code::cannotConnect)));
    background.queue.drain();
    EXPECT_TRUE(background.denials.isEmpty());
    EXPECT_FALSE(fetch(failed(HttpError::Code::notConnected)));
    background.queue.drain();
    EXPECT_EQ(background.denials, QList<bool>{true});
}

TEST_F(TextFetcherTest, WaitsNoLongerThanTheRequestsOwnTimeout) {
    // The session keeps the request open for ever; its completion then comes too late.
    EXPECT_FALSE(fetcher.fetchText(request(5, std::chrono::milliseconds(1))));
    ASSERT_EQ(background.http.open.size(), 1U) << "it is not cancelled";
    background.http.answer(200, "late");
    EXPECT_FALSE(fetcher.fetchText(request(6, std::chrono::milliseconds(0))));
}

TEST_F(TextFetcherTest, FetchesEveryTextOnce) {
    background.http.automatic = [](const HttpRequest& r) {
        return r.url.host().endsWith(u'3') ? answered(404) : answered(200, r.url.host());
    };
    std::vector<HttpRequest> requests;
    for (int host = 0; host < 100; ++host)
        requests.push_back(request(host));
    QStringList texts(100);
    int received = 0;
    fetcher.fetchTexts(requests, TextFetcher::Denial::noted, [&](std::size_t index, const QString& text) {
        texts[static_cast<qsizetype>(index)] = text;
        ++received;
    });
    EXPECT_EQ(received, 90);
    EXPECT_EQ(background.http.requests.size(), 100U);
    for (int host = 0; host < 100; ++host)
        EXPECT_EQ(texts[host], host % 10 == 3 ? QString() : QStringLiteral("10.0.0.%1").arg(host));
}

TEST_F(TextFetcherTest, AnAnswerInTimeCountsHoweverLongAnotherIsRead) {
    // The second answer comes while the first is being read, which goes on beyond its deadline.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(400);
    background.http.automatic = [this](const HttpRequest&) {
        background.http.automatic = nullptr;
        return answered(200, QStringLiteral("first"));
    };
    QStringList texts;
    fetcher.fetchTexts({request(1), request(2, std::chrono::milliseconds(300))}, TextFetcher::Denial::noted,
                       [&](std::size_t, const QString& text) {
                           texts.append(text);
                           if (!background.http.open.empty())
                               background.http.answer(200, "second");
                           while (std::chrono::steady_clock::now() < deadline)
                               std::this_thread::yield();
                       });
    EXPECT_EQ(texts, (QStringList{QStringLiteral("first"), QStringLiteral("second")}));
}

TEST_F(TextFetcherTest, FetchesNothingForNothing) {
    fetcher.fetchTexts({}, TextFetcher::Denial::noted, [](std::size_t, const QString&) { ADD_FAILURE(); });
    EXPECT_TRUE(background.http.requests.empty());
}

TEST_F(TextFetcherTest, StopsAtTheManagersEnd) {
    background.state->end();
    EXPECT_FALSE(fetcher.fetchText(request(5)));
    EXPECT_TRUE(background.http.requests.empty());
}

} // namespace
} // namespace zofra
