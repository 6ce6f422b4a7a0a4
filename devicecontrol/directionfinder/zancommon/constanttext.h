#pragma once

#include <QString>
#include <QStringView>

#include <concepts>
#include <cstddef>

/// A text of a constant table. It is a compile-time constant, as the table is, and converts to a `QString`
/// (`QString name = row.name;`).
///
/// Can only be created from a literal, and so is valid for the whole run. From any thread.
class ConstantText : public QStringView {
public:
    constexpr ConstantText() = default;
    template <std::size_t SIZE>
    // NOLINTNEXTLINE(google-explicit-constructor,modernize-avoid-c-arrays): a row is written as its literals
    consteval ConstantText(const char16_t (&literal)[SIZE])
        : QStringView(literal) {}

    // NOLINTNEXTLINE(google-explicit-constructor): converts wherever a QString is wanted
    operator QString() const { return toString(); }

    /// Compares case-sensitively with texts of any kind; nothing is copied.
    template <std::convertible_to<QStringView> Text>
    friend bool operator==(const ConstantText& text, const Text& other) {
        return static_cast<const QStringView&>(text) == QStringView(other);
    }
};
