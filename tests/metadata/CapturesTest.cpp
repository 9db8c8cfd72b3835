// SPDX-License-Identifier: GPL-3.0-or-later
// Whole frames and bodies as they come in the field, read from the folder that ZOFRA_FIXTURES names.
#include "metadata/LiveSocket.h"
#include "metadata/OnAirItem.h"
#include "metadata/ScraperPage.h"
#include "tests/support/PrintQt.h"

#include <QFile>

#include <gtest/gtest.h>
#include <optional>

namespace zofra {
namespace {

std::optional<QByteArray> fixture(const char* name) {
    const auto folder =
        qEnvironmentVariable("ZOFRA_FIXTURES", QStringLiteral(ZOFRA_SOURCE_DIR "/../shared/fixtures"));
    QFile file(folder + u'/' + QString::fromLatin1(name));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

#define READ_OR_SKIP(variable, name)                                                                         \
    const auto variable = fixture(name);                                                                     \
    if (!variable)                                                                                           \
    GTEST_SKIP() << "skipped: " << (name) << " is missing"

struct Shown {
    QString current;
    QString next;
    friend bool operator==(const Shown&, const Shown&) = default;
};

std::optional<Shown> shown(const QByteArray& frame, RadioStation station) {
    // The files end with a line break, the frames do not.
    const auto track = liveTrackInFrame(QString::fromUtf8(frame).trimmed(), station);
    if (!track)
        return std::nullopt;
    return Shown{track->formattedCurrent(), track->next ? track->next->formatted() : u"(no next)"_qs};
}

TEST(CapturedFrameTest, Accents) {
    READ_OR_SKIP(frame, "live_socket/play_accents.txt");
    EXPECT_EQ(shown(*frame, RadioStation::qmusic),
              (Shown{u"BEYONCÉ – Déjà vu"_qs, u"NIELS DESTADSBADER – D'Er Alleen Voor"_qs}));
    EXPECT_EQ(shown(*frame, RadioStation::joe), std::nullopt);
}

TEST(CapturedFrameTest, EscapesInThreeLayers) {
    READ_OR_SKIP(frame, "live_socket/play_escapes.txt");
    EXPECT_EQ(shown(*frame, RadioStation::qmusic),
              (Shown{u"AC/DC – AC/DC \"Live\" \\ Thunder & <b>"_qs, QString()}));
}

TEST(CapturedFrameTest, WithoutNext) {
    READ_OR_SKIP(frame, "live_socket/play_without_next.txt");
    EXPECT_EQ(shown(*frame, RadioStation::joe), (Shown{u"QUEEN – Don't Stop Me Now"_qs, u"(no next)"_qs}));
}

TEST(CapturedFrameTest, TwoMessages) {
    READ_OR_SKIP(frame, "live_socket/two_messages.txt");
    EXPECT_EQ(shown(*frame, RadioStation::joe), (Shown{u"SIGUR RÓS – 日本 😀"_qs, u"(no next)"_qs}));
    EXPECT_EQ(shown(*frame, RadioStation::qmusic),
              (Shown{u"BEYONCÉ – Déjà vu"_qs, u"NIELS DESTADSBADER – D'Er Alleen Voor"_qs}));
    EXPECT_EQ(shown(*frame, RadioStation::zofra), std::nullopt);
}

TEST(CapturedFrameTest, Closes) {
    for (const auto* name : {"live_socket/close_go_away.txt", "live_socket/close_no_heartbeat.txt"}) {
        READ_OR_SKIP(frame, name);
        EXPECT_EQ(sockJSFrameKind(QString::fromUtf8(*frame)), SockJSFrameKind::close) << name;
    }
}

struct OnAirCase {
    const char* file;
    const char* rpId;
    double now;
    /// "(failure)" and "(no text)" for what is not shown.
    const char16_t* text;
};

class CapturedOnAirTest : public testing::TestWithParam<OnAirCase> {};

TEST_P(CapturedOnAirTest, Shows) {
    READ_OR_SKIP(body, GetParam().file);
    const auto items = onAirItems(*body, QString::fromLatin1(GetParam().rpId));
    const auto text = items ? onAirText(*items, GetParam().now).value_or(u"(no text)"_qs) : u"(failure)"_qs;
    EXPECT_EQ(text, QString::fromUtf16(GetParam().text));
}

constexpr double whileOnAir = 1763670700;
constexpr const char16_t* dejaVu = u"Beyoncé – Déjà Vu";
INSTANTIATE_TEST_SUITE_P(
    Files, CapturedOnAirTest,
    testing::Values(OnAirCase{"onair/01-song-string-times.json", "6", whileOnAir, dejaVu},
                    OnAirCase{"onair/01-song-string-times.json", "1", whileOnAir, u"(failure)"},
                    OnAirCase{"onair/02-song-number-times.json", "6", whileOnAir, dejaVu},
                    OnAirCase{"onair/03-programme-only.json", "6", whileOnAir, u"La Matinale"},
                    OnAirCase{"onair/04-empty-results.json", "6", whileOnAir, u"(failure)"},
                    OnAirCase{"onair/05-jsonp-default-callback.txt", "1", whileOnAir, dejaVu},
                    OnAirCase{"onair/06-jsonp-named-callback.txt", "1", whileOnAir, dejaVu},
                    OnAirCase{"onair/07-station-info-only.json", "1", whileOnAir, u"(no text)"},
                    OnAirCase{"onair/08-error.json", "6", whileOnAir, u"(failure)"},
                    OnAirCase{"onair/10-two-songs-pick-by-time.json", "6", whileOnAir, dejaVu},
                    OnAirCase{"onair/10-two-songs-pick-by-time.json", "6", 1763670100, u"Beyoncé – Old"},
                    OnAirCase{"onair/10-two-songs-pick-by-time.json", "6", 1763679999, dejaVu}));

struct ScraperCase {
    const char* file;
    const char16_t* text;
};

class CapturedPageTest : public testing::TestWithParam<ScraperCase> {};

TEST_P(CapturedPageTest, Shows) {
    READ_OR_SKIP(body, GetParam().file);
    const auto page = ScraperPage::fromBody(*body);
    ASSERT_TRUE(page);
    EXPECT_EQ(page->text().value_or(u"(no text)"_qs), QString::fromUtf16(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Files, CapturedPageTest,
    testing::Values(ScraperCase{"scraper/02-title-only.json", u"Queen - Don't Stop Me Now"},
                    ScraperCase{"scraper/03-u00e9-and-slash.json", uR"(Beyonc\u00e9 - D\u00e9j\u00e0 vu)"},
                    ScraperCase{"scraper/04-u0026.json", uR"(Simon \u0026 Garfunkel - Mrs. Robinson)"},
                    ScraperCase{"scraper/05-html-entity-apostrophe.json",
                                u"Guns N&#39; Roses - Sweet Child O&#39; Mine"},
                    ScraperCase{"scraper/06-empty-title.json", u"(no text)"},
                    ScraperCase{"scraper/07-no-title.json", u"(no text)"},
                    ScraperCase{"scraper/08-slash-separator-newline.json", uR"(\nAC\/DC \/ Thunderstruck)"},
                    ScraperCase{"scraper/09-title-without-dash.json", u"Some Song Title"},
                    ScraperCase{"scraper/10-not-json.txt", u"(no text)"}));

} // namespace
} // namespace zofra
