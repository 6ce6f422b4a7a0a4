#pragma once

#include <QString>
#include <QStringView>

#include <concepts>
#include <cstddef>

/// A text of a constant table: it is there before anything runs, as the table is, and becomes a `QString`
/// wherever one is wanted (`QString name = row.name;`).
///
/// Made of a literal only, so that it is good for the whole run. From any thread.
class ConstantText : public QStringView {
public:
    constexpr ConstantText() = default;
    template <std::size_t SIZE>
    // NOLINTNEXTLINE(google-explicit-constructor,modernize-avoid-c-arrays): a row is written as its literals
    consteval ConstantText(const char16_t (&literal)[SIZE])
        : QStringView(literal) {}

    // NOLINTNEXTLINE(google-explicit-constructor): it stands wherever a text stood
    operator QString() const { return toString(); }

    /// Case-sensitively, with texts of any kind; nothing is copied.
    template <std::convertible_to<QStringView> Text>
    friend bool operator==(const ConstantText& text, const Text& other) {
        return static_cast<const QStringView&>(text) == QStringView(other);
    }
};
