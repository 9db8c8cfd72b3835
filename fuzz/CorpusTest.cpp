// SPDX-License-Identifier: GPL-3.0-or-later
// Everything that a fuzzer has ever found worth keeping, in seconds and with any compiler. A target ends the
// program where something does not hold; the file's name is then the last line.
#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <iostream>
#include <vector>

#define TARGET(name, longest) extern "C" int name(const std::uint8_t* data, std::size_t size);
#include "FuzzTargets.inc"
#undef TARGET

namespace {

struct Target {
    const char* name;
    int (*run)(const std::uint8_t*, std::size_t);
    qsizetype longest;
};

const Target targets[] = {
#define TARGET(name, longest) {#name, &name, longest},
#include "FuzzTargets.inc"
#undef TARGET
};

void PrintTo(const Target& target, std::ostream* out) {
    *out << target.name;
}

/// Every file of the target's corpus.
std::vector<QByteArray> corpusOf(const Target& target) {
    std::vector<QByteArray> inputs;
    QDirIterator files(QStringLiteral(ZOFRA_CORPUS "/") + QString::fromLatin1(target.name), QDir::Files);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly))
            inputs.push_back(file.readAll());
    }
    return inputs;
}

void run(const Target& target, const QByteArray& input) {
    EXPECT_EQ(target.run(reinterpret_cast<const std::uint8_t*>(input.constData()),
                         static_cast<std::size_t>(input.size())),
              0);
}

class FuzzCorpusTest : public testing::TestWithParam<Target> {};

TEST_P(FuzzCorpusTest, Holds) {
    const auto inputs = corpusOf(GetParam());
    EXPECT_GE(inputs.size(), 1U) << "no corpus";
    run(GetParam(), {});
    for (const auto& input : inputs)
        run(GetParam(), input);
}

TEST_P(FuzzCorpusTest, HoldsBeyondEveryCap) {
    for (const auto& input : corpusOf(GetParam())) {
        if (!input.isEmpty() && input.size() < GetParam().longest)
            run(GetParam(), input.repeated(GetParam().longest / input.size() + 1));
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzCorpusTest, testing::ValuesIn(targets),
                         [](const auto& target) { return std::string(target.param.name); });

} // namespace
