// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/audio/MpvCore.h"

#include "tests/platform/audio/FakeMpv.h"
#include "tests/support/ManualMainQueue.h"
#include "tests/support/PrintQt.h"

#include <chrono>
#include <clocale>
#include <dlfcn.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <vector>

namespace zofra::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Event = FakeMpvControl::Event;

/// One that outlives its test, as the program's does: an mpv may still be ending.
ManualMainQueue& lastingQueue() {
    static auto* queues = new std::vector<std::unique_ptr<ManualMainQueue>>;
    return *queues->emplace_back(std::make_unique<ManualMainQueue>());
}

QString text(const EngineEvent& event) {
    switch (event.kind) {
    case EngineEvent::Kind::fileLoaded:
        return QStringLiteral("loaded");
    case EngineEvent::Kind::playbackRestarted:
        return QStringLiteral("restarted");
    case EngineEvent::Kind::coreIdle:
        return event.value ? QStringLiteral("idle") : QStringLiteral("busy");
    case EngineEvent::Kind::pausedForCache:
        return event.value ? QStringLiteral("dry") : QStringLiteral("wet");
    case EngineEvent::Kind::ended:
        break;
    }
    return event.cause == EndCause::stream          ? QStringLiteral("ended")
           : event.cause == EndCause::noAudioDevice ? QStringLiteral("no device")
                                                    : QStringLiteral("no engine");
}

/// The core on a library that does nothing by itself.
class MpvCoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        void* library = ::dlopen(ZOFRA_FAKE_MPV, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << ::dlerror();
        const auto setControl = reinterpret_cast<FakeMpvSetControl>(::dlsym(library, fakeMpvControlName));
        ASSERT_NE(setControl, nullptr);
        setControl(&fake);
    }
    void TearDown() override {
        core.reset();
        queue.drain();
        release();
        // Threads that still end use the control of this test.
        waitFor([this] { return MpvHandle::stillEnding() == 0 && allEnded(); });
    }

    /// Waits for another thread to bring something about.
    void waitFor(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + 10s;
        while (!condition()) {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
            std::this_thread::yield();
        }
    }
    bool allEnded() {
        const std::scoped_lock lock(fake.mutex);
        return std::all_of(fake.instances.begin(), fake.instances.end(),
                           [](const auto& i) { return i->isEnded; });
    }
    void release() {
        const std::scoped_lock lock(fake.mutex);
        fake.holdsEnding = false;
        fake.changed.notify_all();
    }
    /// Loads and lets the making of the mpv, if one is made, come to its end.
    void load(const char* url, std::size_t expectedInstances = 1) {
        core->load(QUrl(QString::fromLatin1(url)), [this](const std::vector<EngineEvent>& events) {
            QStringList words;
            for (const auto& event : events)
                words << text(event);
            told << words.join(u' ');
        });
        waitUntilMade(expectedInstances);
    }
    void waitUntilMade(std::size_t expectedInstances) {
        waitFor([&] {
            queue.drain();
            const std::scoped_lock lock(fake.mutex);
            return fake.instances.size() == expectedInstances && fake.instances.back()->lastCommandId != 0;
        });
    }
    std::vector<std::string> takeCalls() {
        const std::scoped_lock lock(fake.mutex);
        return std::exchange(fake.calls, {});
    }

    /// Adds events to those of the latest mpv; `ring` then tells that they are there.
    std::unique_ptr<Event> event(mpv_event_id id, void* (*data)(Event&) = nullptr) {
        auto result = std::make_unique<Event>();
        result->event.event_id = id;
        result->event.data = data ? data(*result) : nullptr;
        return result;
    }
    void push(std::unique_ptr<Event> event) {
        const std::scoped_lock lock(fake.mutex);
        fake.instances.back()->events.push_back(std::move(event));
    }
    /// The answer to the latest command.
    void reply(std::int64_t entry, int error = 0) {
        auto answer = event(MPV_EVENT_COMMAND_REPLY, [](Event& e) -> void* { return &e.command; });
        {
            const std::scoped_lock lock(fake.mutex);
            answer->event.reply_userdata = fake.instances.back()->lastCommandId;
        }
        answer->event.error = error;
        answer->key = "playlist_entry_id";
        answer->keyPointer = answer->key.data();
        answer->value.format = MPV_FORMAT_INT64;
        answer->value.u.int64 = entry;
        answer->list = {1, &answer->value, &answer->keyPointer};
        answer->command.result.format = MPV_FORMAT_NODE_MAP;
        answer->command.result.u.list = &answer->list;
        push(std::move(answer));
    }
    void start(std::int64_t entry) {
        auto begun = event(MPV_EVENT_START_FILE, [](Event& e) -> void* { return &e.start; });
        begun->start.playlist_entry_id = entry;
        push(std::move(begun));
    }
    void end(std::int64_t entry, mpv_end_file_reason reason, int error = 0) {
        auto ended = event(MPV_EVENT_END_FILE, [](Event& e) -> void* { return &e.end; });
        ended->end.playlist_entry_id = entry;
        ended->end.reason = reason;
        ended->end.error = error;
        push(std::move(ended));
    }
    void property(std::uint64_t id, int value) {
        auto change = event(MPV_EVENT_PROPERTY_CHANGE, [](Event& e) -> void* { return &e.property; });
        change->event.reply_userdata = id;
        change->flag = value;
        change->property.format = value < 0 ? MPV_FORMAT_NONE : MPV_FORMAT_FLAG;
        change->property.data = value < 0 ? nullptr : &change->flag;
        push(std::move(change));
    }
    void coreIdle(int value) { property(MpvHandle::coreIdleId, value); }
    void pausedForCache(int value) { property(MpvHandle::pausedForCacheId, value); }
    void simple(mpv_event_id id) { push(event(id)); }
    void ring() {
        {
            const std::scoped_lock lock(fake.mutex);
            const auto& instance = *fake.instances.back();
            if (instance.wakeup)
                instance.wakeup(instance.wakeupData);
        }
        queue.drain();
    }
    void startPlaying(const char* url, std::int64_t entry) {
        load(url);
        reply(entry);
        start(entry);
        simple(MPV_EVENT_FILE_LOADED);
        simple(MPV_EVENT_PLAYBACK_RESTART);
        coreIdle(0);
        ring();
        ASSERT_THAT(told, ElementsAre(QStringLiteral("idle wet loaded restarted busy")));
        told.clear();
        takeCalls();
    }

    FakeMpvControl fake;
    ManualMainQueue& queue = lastingQueue();
    QStringList reported;
    QStringList told;
    /// Threads are to be had. What is shared lasts as long as the last mpv.
    std::shared_ptr<bool> hasThreads = std::make_shared<bool>(true);
    std::unique_ptr<MpvCore> core = std::make_unique<MpvCore>(
        queue,
        MpvHandle::Recipe{ZOFRA_FAKE_MPV,
                          std::make_shared<StreamSource>([] { return HttpStream::Settings{}; }),
                          [hasThreads = hasThreads](const std::function<void()>& work) {
                              if (*hasThreads)
                                  std::thread(work).detach();
                              return *hasThreads;
                          }},
        [this](const QString& reason) { reported << reason; });
};

TEST_F(MpvCoreTest, makesNoMpvBeforeItIsNeeded) {
    core->setVolume(0.5F);
    core->setPaused(AudioCore::Pause::yes);
    core->stop();
    queue.advance(1min);
    EXPECT_THAT(fake.instances, IsEmpty());
}

TEST_F(MpvCoreTest, makesOneWithItsOptionsAndOpensTheAddress) {
    core->setVolume(0.125F);
    load("http://127.0.0.1:1/x.aac?y=1");
    EXPECT_THAT(takeCalls(),
                ElementsAre("set volume 50", "set pause 0", "loadfile zofrahttp://127.0.0.1:1/x.aac?y=1"));
    EXPECT_EQ(fake.options.at("demuxer"), "lavf");
    EXPECT_THAT(fake.protocols, ElementsAre("zofrahttps", "zofrahttp"));
    EXPECT_THAT(reported, IsEmpty());
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

TEST_F(MpvCoreTest, passesOnWhatBecameOfTheConnection) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    coreIdle(1);
    pausedForCache(1);
    ring();
    coreIdle(0);
    pausedForCache(0);
    ring();
    end(1, MPV_END_FILE_REASON_EOF);
    ring();
    EXPECT_THAT(told,
                ElementsAre(QStringLiteral("idle dry"), QStringLiteral("busy wet"), QStringLiteral("ended")));
}

TEST_F(MpvCoreTest, tellsTogetherWhatCameTogether) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    coreIdle(1);
    end(1, MPV_END_FILE_REASON_ERROR, MPV_ERROR_LOADING_FAILED);
    coreIdle(1);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("idle ended")));
}

TEST_F(MpvCoreTest, tellsAMissingDeviceFromABrokenStream) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    end(1, MPV_END_FILE_REASON_ERROR, MPV_ERROR_AO_INIT_FAILED);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("no device")));
}

TEST_F(MpvCoreTest, takesAStreamThatTurnsOutToBeAListForFailed) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    end(1, MPV_END_FILE_REASON_REDIRECT);
    start(2);
    simple(MPV_EVENT_FILE_LOADED);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("ended")));
}

TEST_F(MpvCoreTest, isSilentAboutWhatItWasToldToStop) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    core->stop();
    EXPECT_THAT(takeCalls(), ElementsAre("stop"));
    coreIdle(1);
    end(1, MPV_END_FILE_REASON_STOP);
    ring();
    end(1, MPV_END_FILE_REASON_ERROR);
    ring();
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(MpvCoreTest, keepsTheNewsOfOneConnectionFromTheNext) {
    startPlaying("http://127.0.0.1:1/1.aac", 1);
    load("http://127.0.0.1:1/2.aac");
    EXPECT_THAT(takeCalls(), ElementsAre("loadfile zofrahttp://127.0.0.1:1/2.aac"));
    // The old one is still telling when the new one has been asked for.
    coreIdle(1);
    pausedForCache(1);
    end(1, MPV_END_FILE_REASON_EOF);
    ring();
    EXPECT_THAT(told, IsEmpty());
    reply(2);
    simple(MPV_EVENT_FILE_LOADED);
    ring();
    EXPECT_THAT(told, IsEmpty());
    start(2);
    simple(MPV_EVENT_FILE_LOADED);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("idle dry loaded")))
        << "with the values that are not told again";
}

TEST_F(MpvCoreTest, isNotConfusedByTheAnswerToAnEarlierCommand) {
    load("http://127.0.0.1:1/1.aac");
    auto late = event(MPV_EVENT_COMMAND_REPLY, [](Event& e) -> void* { return &e.command; });
    late->event.reply_userdata = fake.instances.back()->lastCommandId;
    load("http://127.0.0.1:1/2.aac");
    push(std::move(late));
    end(1, MPV_END_FILE_REASON_ERROR);
    reply(2);
    start(2);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("idle wet")));
}

TEST_F(MpvCoreTest, understandsAnAnswerThatComesAfterTheStart) {
    load("http://127.0.0.1:1/1.aac");
    start(1);
    reply(1);
    simple(MPV_EVENT_FILE_LOADED);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("idle wet loaded")));
    queue.advance(1min);
    EXPECT_EQ(fake.instances.size(), 1U) << "it did start";
}

TEST_F(MpvCoreTest, failsWhenTheAddressIsNotTaken) {
    load("http://127.0.0.1:1/1.aac");
    reply(1, MPV_ERROR_COMMAND);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("no engine")));
}

TEST_F(MpvCoreTest, takesAnUnknownPropertyForSilence) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    coreIdle(-1);
    pausedForCache(-1);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("idle wet")));
}

TEST_F(MpvCoreTest, replacesAnMpvThatHangs) {
    fake.holdsEnding = true;
    load("http://127.0.0.1:1/1.aac");
    reply(1);
    ring();
    takeCalls();
    queue.advance(1499ms);
    EXPECT_EQ(fake.instances.size(), 1U);
    queue.advance(1ms);
    waitUntilMade(2);
    EXPECT_THAT(takeCalls(),
                ElementsAre("set volume 100", "set pause 0", "loadfile zofrahttp://127.0.0.1:1/1.aac"));
    EXPECT_EQ(MpvHandle::stillEnding(), 1);
    reply(7);
    start(7);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("idle wet")));
    queue.advance(1min);
    EXPECT_EQ(fake.instances.size(), 2U);
}

TEST_F(MpvCoreTest, leavesNoMoreThanThreeHungOnesBehind) {
    fake.holdsEnding = true;
    load("http://127.0.0.1:1/1.aac");
    for (std::size_t made = 2; made <= 4; ++made) {
        queue.advance(1500ms);
        waitUntilMade(made);
    }
    queue.advance(1min);
    EXPECT_EQ(fake.instances.size(), 4U);
    EXPECT_EQ(MpvHandle::stillEnding(), 3);
    release();
    waitFor([] { return MpvHandle::stillEnding() == 0; });
    queue.advance(750ms);
    waitUntilMade(5);
}

TEST_F(MpvCoreTest, failsInOneLineWhileNoThreadIsToBeHadAndPlaysLater) {
    *hasThreads = false;
    core->load(QUrl(QStringLiteral("http://127.0.0.1:1/1.aac")),
               [this](const std::vector<EngineEvent>& events) { told << text(events.front()); });
    queue.drain();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("no engine")));
    EXPECT_THAT(reported, ElementsAre(QStringLiteral("No thread could be started for the audio engine")));
    *hasThreads = true;
    load("http://127.0.0.1:1/1.aac");
}

TEST_F(MpvCoreTest, endsWhatIsOverOnceThreadsAreToBeHadAgain) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    *hasThreads = false;
    simple(MPV_EVENT_SHUTDOWN);
    ring();
    EXPECT_THAT(takeCalls(), ElementsAre("stop")) << "silent, though not ended";
    EXPECT_FALSE(fake.instances.front()->isEnded);
    EXPECT_EQ(MpvHandle::stillEnding(), 0) << "it does not keep others from being replaced";
    *hasThreads = true;
    load("http://127.0.0.1:1/x.aac", 2);
    waitFor([this] {
        const std::scoped_lock lock(fake.mutex);
        return fake.instances.front()->isEnded;
    });
}

TEST_F(MpvCoreTest, doesNotWaitForTheStartOfWhatItStopped) {
    load("http://127.0.0.1:1/1.aac");
    core->stop();
    queue.advance(1min);
    EXPECT_EQ(fake.instances.size(), 1U);
}

TEST_F(MpvCoreTest, makesAnotherWhenMpvEndsByItself) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    simple(MPV_EVENT_SHUTDOWN);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("no engine")));
    load("http://127.0.0.1:1/x.aac", 2);
    EXPECT_THAT(takeCalls(),
                ElementsAre("set volume 100", "set pause 0", "loadfile zofrahttp://127.0.0.1:1/x.aac"));
}

TEST_F(MpvCoreTest, makesAnotherWhenEventsWereLost) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    simple(MPV_EVENT_QUEUE_OVERFLOW);
    ring();
    EXPECT_THAT(told, ElementsAre(QStringLiteral("no engine")));
}

TEST_F(MpvCoreTest, keepsPauseAndVolumeForTheMpvThatIsStillBeingMade) {
    core->load(QUrl(QStringLiteral("http://127.0.0.1:1/x.aac")), [](const auto&) {});
    core->setVolume(0.0F);
    core->setPaused(AudioCore::Pause::yes);
    waitUntilMade(1);
    EXPECT_THAT(takeCalls(),
                ElementsAre("set volume 0", "set pause 1", "loadfile zofrahttp://127.0.0.1:1/x.aac"));
}

TEST_F(MpvCoreTest, opensOnlyTheLatestAddressOnceTheMpvIsMade) {
    core->load(QUrl(QStringLiteral("http://127.0.0.1:1/1.aac")), [](const auto&) { FAIL(); });
    load("http://127.0.0.1:1/2.aac");
    EXPECT_THAT(takeCalls(),
                ElementsAre("set volume 100", "set pause 0", "loadfile zofrahttp://127.0.0.1:1/2.aac"));
    EXPECT_EQ(fake.instances.size(), 1U);
}

TEST_F(MpvCoreTest, opensNothingWhenStoppedBeforeTheMpvIsMade) {
    core->load(QUrl(QStringLiteral("http://127.0.0.1:1/1.aac")), [](const auto&) { FAIL(); });
    queue.drain();
    core->stop();
    waitFor([this] {
        queue.drain();
        const std::scoped_lock lock(fake.mutex);
        return fake.calls.size() >= 2;
    });
    EXPECT_THAT(takeCalls(), ElementsAre("set volume 100", "set pause 0"));
}

TEST_F(MpvCoreTest, tellsMpvOnceATurnHoweverOftenTheListenerChangesHisMind) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    for (int i = 0; i < 1000; ++i) {
        core->stop();
        core->setTitle(QString::number(i));
        core->setVolume(static_cast<float>(i) / 8000);
        core->load(QUrl(QStringLiteral("http://127.0.0.1:1/%1.aac").arg(i)), [](const auto&) { FAIL(); });
    }
    EXPECT_THAT(takeCalls(), ElementsAre("stop")) << "silent at once";
    queue.drain();
    EXPECT_THAT(takeCalls(), ElementsAre("set volume 50", "set force-media-title 999",
                                         "loadfile zofrahttp://127.0.0.1:1/999.aac"));
}

TEST_F(MpvCoreTest, endsTheMpvThatIsMadeTooLate) {
    core->load(QUrl(QStringLiteral("http://127.0.0.1:1/1.aac")), [](const auto&) { FAIL(); });
    queue.drain();
    core.reset();
    waitFor([this] {
        queue.drain();
        const std::scoped_lock lock(fake.mutex);
        return fake.instances.size() == 1 && fake.instances.front()->isEnded;
    });
}

TEST_F(MpvCoreTest, tellsNothingAfterItsEnd) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    end(1, MPV_END_FILE_REASON_EOF);
    {
        const std::scoped_lock lock(fake.mutex);
        fake.instances.back()->wakeup(fake.instances.back()->wakeupData);
    }
    ASSERT_EQ(queue.pendingWork(), 1U);
    core.reset();
    queue.drain();
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(MpvCoreTest, postsOnceHoweverOftenItIsRung) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    {
        const std::scoped_lock lock(fake.mutex);
        for (int i = 0; i < 1000; ++i)
            fake.instances.back()->wakeup(fake.instances.back()->wakeupData);
    }
    EXPECT_EQ(queue.pendingWork(), 1U);
}

TEST_F(MpvCoreTest, neverWaitsForEventsOnTheMainThread) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    ring();
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(MpvCoreTest, fetchesAFloodInPieces) {
    startPlaying("http://127.0.0.1:1/x.aac", 1);
    for (int i = 0; i < 2500; ++i)
        coreIdle(i % 2);
    ring();
    ASSERT_EQ(told.size(), 3);
    EXPECT_EQ(told[0].count(u' '), 999);
    EXPECT_EQ(told[2].count(u' '), 499);
}

class MpvCoreShortageTest : public MpvCoreTest {
protected:
    void expectReport(const char* reason) {
        core->load(QUrl(QStringLiteral("http://127.0.0.1:1/1.aac")),
                   [this](const std::vector<EngineEvent>& events) { told << text(events.front()); });
        waitFor([this] {
            queue.drain();
            return !told.isEmpty();
        });
        EXPECT_THAT(told, ElementsAre(QStringLiteral("no engine")));
        EXPECT_THAT(reported, ElementsAre(QString::fromLatin1(reason)));
    }
};

TEST_F(MpvCoreShortageTest, becauseAnOptionThatMattersIsNotTaken) {
    fake.refusedOption = "tls-verify";
    expectReport("libmpv does not take the option tls-verify: option not found");
    EXPECT_TRUE(fake.instances.front()->isEnded);
}

TEST_F(MpvCoreShortageTest, butAnOptionThatOnlyHelpsMayBeMissing) {
    fake.refusedOption = "pulse-buffer";
    load("http://127.0.0.1:1/1.aac");
    EXPECT_THAT(reported, IsEmpty());
}

TEST_F(MpvCoreShortageTest, becauseItTakesNoStreamsOfOurs) {
    fake.addProtocolResult = MPV_ERROR_GENERIC;
    expectReport("libmpv does not take our streams: something else");
    EXPECT_TRUE(fake.instances.front()->isEnded);
}

TEST_F(MpvCoreShortageTest, becauseItDoesNotStart) {
    fake.initializeResult = MPV_ERROR_GENERIC;
    expectReport("libmpv cannot be started: something else");
}

TEST_F(MpvCoreShortageTest, becauseThereIsNoMemory) {
    fake.failsToCreate = true;
    expectReport("libmpv cannot be started");
}

TEST_F(MpvCoreShortageTest, becauseItsInterfaceIsAnother) {
    fake.apiVersion = 9UL << 16U;
    expectReport("libmpv cannot be used: its interface has version 9");
}

} // namespace
} // namespace zofra::test
