// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/doctor/Check.h"
#include "app/doctor/SpeakerFindings.h"
#include "speakers/SpeakerBackground.h"

#include <memory>

namespace zofra::doctor {

/// Lets the program's own search for players run once, and watches it from both sides: what it sends on which
/// interface, what answers, and which addresses had to be asked one by one. Main thread only.
class SpeakerCheck final : public Check {
public:
    /// What is `outside` outlives the search, which goes on in the background when this object ends.
    SpeakerCheck(const SpeakerBackground::Outside& outside, AppLanguage language);
    ~SpeakerCheck() override;
    SpeakerCheck(const SpeakerCheck&) = delete;
    SpeakerCheck& operator=(const SpeakerCheck&) = delete;

    void start(Done done) override;
    [[nodiscard]] Findings soFar() const override;

private:
    struct Watch;

    SpeakerBackground::Outside m_outside;
    const AppLanguage m_language;
    std::shared_ptr<Watch> m_watch;
    std::shared_ptr<SpeakerBackground> m_background;
    Done m_done;
};

} // namespace zofra::doctor
