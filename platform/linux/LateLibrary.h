// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/Result.h"

#include <QString>

#include <dlfcn.h>
#include <optional>
#include <utility>

namespace zofra {

/// A library that is loaded when it is first needed, for what it brings with it is large and slow to load.
/// Callable from any thread but the main one: it may take a tenth of a second. Never unloaded.
class LateLibrary {
public:
    /// `name` is what a person calls it.
    LateLibrary(QString name, const char* fileName)
        : m_name(std::move(name))
        // Lazily: of the thousands of functions behind it, a radio needs few.
        , m_handle(::dlopen(fileName, RTLD_LAZY | RTLD_LOCAL)) {
        if (m_handle != nullptr)
            return;
        const char* reason = ::dlerror();
        m_problem =
            u"%1 cannot be loaded: %2"_qs.arg(m_name, QString::fromLocal8Bit(reason ? reason : fileName));
    }

    /// Sets `function` to what is called `name` in the library; what a library without it lacks is a problem.
    template<typename Function>
    void require(Function& function, const char* name) {
        if (find(function, name) || m_problem)
            return;
        m_problem = u"%1 cannot be used: it has no %2"_qs.arg(m_name, QString::fromLatin1(name));
    }
    /// As `require`, of what can be done without. False when it is not there.
    template<typename Function>
    bool find(Function& function, const char* name) const {
        if (m_handle != nullptr)
            function = reinterpret_cast<Function>(::dlsym(m_handle, name));
        return m_handle != nullptr && function != nullptr;
    }
    /// Why it cannot be used, if so.
    [[nodiscard]] const std::optional<QString>& problem() const { return m_problem; }

private:
    QString m_name;
    void* m_handle;
    std::optional<QString> m_problem;
};

} // namespace zofra
