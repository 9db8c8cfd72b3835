// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Workspace.h"

#include <vector>

namespace zofra::test {

/// Keeps what was to be opened.
class FakeWorkspace final : public Workspace {
public:
    void open(const QUrl& url) override { opened.push_back(url); }
    std::vector<QUrl> opened;
};

} // namespace zofra::test
