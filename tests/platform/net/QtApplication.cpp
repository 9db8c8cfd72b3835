// SPDX-License-Identifier: GPL-3.0-or-later
// Sockets of Qt need an application object.
#include <QCoreApplication>

#include <array>
#include <gtest/gtest.h>
#include <memory>

namespace {

class QtApplication final : public testing::Environment {
public:
    void SetUp() override { m_application = std::make_unique<QCoreApplication>(m_count, m_arguments.data()); }
    void TearDown() override { m_application.reset(); }

private:
    int m_count = 1;
    std::array<char, 5> m_name{"test"};
    std::array<char*, 2> m_arguments{m_name.data(), nullptr};
    std::unique_ptr<QCoreApplication> m_application;
};

const auto* const environment = testing::AddGlobalTestEnvironment(new QtApplication);

} // namespace
