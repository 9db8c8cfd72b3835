// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/JsonText.h"

#include <QRegularExpression>
#include <QStringDecoder>
#include <QStringView>

#include <algorithm>

namespace zofra {

namespace {

/// Walks over the bytes of a document and looks only at what the library does not check itself.
class StrictnessScanner {
public:
    StrictnessScanner(const QByteArray& bytes, JsonBudget& budget)
        : m_at(bytes.cbegin())
        , m_end(bytes.cend())
        , m_budget(budget) {}

    [[nodiscard]] bool accepts() {
        char previous = 0;
        while (m_at != m_end) {
            const char byte = *m_at++;
            if (byte == '"' && !skipString())
                return false;
            // Neither "1." nor ".5" is a number; a point outside of strings can only be a decimal one.
            if (byte == '.' && (!isDigit(previous) || m_at == m_end || !isDigit(*m_at)))
                return false;
            if ((byte == '[' || byte == '{' || byte == ',') && !takeValue())
                return false;
            previous = byte;
        }
        return true;
    }

private:
    static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

    /// What opens a list or separates its members announces one more value.
    bool takeValue() {
        if (m_budget.values == 0)
            return false;
        --m_budget.values;
        return true;
    }

    bool skipString() {
        while (m_at != m_end) {
            const char byte = *m_at++;
            if (byte == '"')
                return true;
            if (byte >= 0 && byte < 0x20)
                return false;
            if (byte == '\\' && !skipEscape())
                return false;
        }
        return false;
    }

    bool skipEscape() {
        if (m_at == m_end)
            return false;
        const char kind = *m_at++;
        if (kind != 'u')
            return QByteArrayView("\"\\/bfnrt").contains(kind);
        const auto unit = readHex();
        if (!unit || QChar::isLowSurrogate(*unit))
            return false;
        if (!QChar::isHighSurrogate(*unit))
            return true;
        if (m_end - m_at < 2 || m_at[0] != '\\' || m_at[1] != 'u')
            return false;
        m_at += 2;
        const auto low = readHex();
        return low && QChar::isLowSurrogate(*low);
    }

    std::optional<char16_t> readHex() {
        if (m_end - m_at < 4)
            return std::nullopt;
        const QByteArrayView digits(m_at, 4);
        if (!std::ranges::all_of(digits, [](char c) { return isxdigit(static_cast<unsigned char>(c)); }))
            return std::nullopt;
        m_at += 4;
        return digits.toUShort(nullptr, 16);
    }

    QByteArray::const_iterator m_at;
    QByteArray::const_iterator m_end;
    JsonBudget& m_budget;
};

bool isCallbackName(QStringView name) {
    static const QRegularExpression form(uR"(\A(?:\p{L}\p{M}*+|[_$])(?:[\p{L}\p{Nd}]\p{M}*+|[_$.])*+\z)"_qs);
    return form.match(name).hasMatch();
}

} // namespace

std::optional<QString> textFromUtf8(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder.decode(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

std::optional<QString> unwrapJSONP(const QString& text) {
    auto call = QStringView(text).trimmed();
    if (call.isEmpty())
        return std::nullopt;
    if (call.startsWith(u'{') || call.startsWith(u'['))
        return call.toString();
    while (call.endsWith(u';'))
        call = call.chopped(1).trimmed();
    if (!call.endsWith(u')'))
        return std::nullopt;
    const auto parenthesis = call.indexOf(u'(');
    if (parenthesis < 0 || !isCallbackName(call.first(parenthesis).trimmed()))
        return std::nullopt;
    const auto inner = call.sliced(parenthesis + 1).chopped(1).trimmed();
    if (inner.isEmpty())
        return std::nullopt;
    return inner.toString();
}

std::optional<QJsonDocument> parseJsonText(const QByteArray& utf8, JsonBudget& budget) {
    if (!StrictnessScanner(utf8, budget).accepts())
        return std::nullopt;
    QJsonParseError error;
    auto document = QJsonDocument::fromJson(utf8, &error);
    return error.error == QJsonParseError::NoError ? std::optional(document) : std::nullopt;
}

} // namespace zofra
