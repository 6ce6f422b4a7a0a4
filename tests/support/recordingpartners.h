#pragma once

#include "support/driveroperations.h"

#include <concepts>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <utility>

namespace KvZANCommon {

/// A value that another seed would not give. Integers lie at the upper end of their type, so that a detour
/// through a narrower one shows.
template <class T>
T Sample(int seed) {
    if constexpr (std::is_same_v<T, bool>) {
        return seed % 2 != 0;
    } else if constexpr (std::is_enum_v<T>) {
        return static_cast<T>(seed);
    } else if constexpr (std::integral<T>) {
        return static_cast<T>(std::numeric_limits<T>::max() - static_cast<T>(seed));
    } else if constexpr (std::floating_point<T>) {
        return static_cast<T>(seed) + T{0.25};
    } else if constexpr (std::is_same_v<T, QString>) {
        return QString::number(seed);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return std::to_string(seed);
    } else {
        return T{}; // handed on by address
    }
}

template <>
inline GainControlStruct Sample(int seed) {
    return {Sample<QString>(seed), seed + 1, seed + 2.0};
}

template <>
inline FilterSettingsStruct Sample(int seed) {
    return {
        seed, seed + 1, seed + 2, seed + 3, seed + 4, seed + 5, seed + 6, seed + 7, Sample<quint64>(seed)};
}

template <>
inline DFSettingsStruct Sample(int seed) {
    return {seed + 0.5, seed + 1, seed + 2.5,           seed + 3,   true,
            true,       true,     seed + 4.5,           seed + 5.5, seed + 6,
            true,       seed + 7, Sample<quint64>(seed)};
}

template <>
inline DEMSettingsStruct Sample(int seed) {
    return {seed, seed + 1, seed + 2, seed + 3.5, seed + 4.5, seed + 5.5};
}

template <>
inline ConverterSetupStruct Sample(int seed) {
    return {seed, seed + 1, Sample<QString>(seed), seed + 2, seed + 3, true, true};
}

template <>
inline AntennaSetupStruct Sample(int seed) {
    return {seed,
            {seed + 0.5, seed + 1.5},
            seed + 2,
            seed + 3,
            seed + 4,
            seed + 5.5,
            {{1.0, 2.0, 1}, {3.0, 4.0, 2}, {seed + 5.0, seed + 6.0, 4}}};
}

/// An argument of one parameter type. A value is kept as a copy; what is handed on by reference or by pointer
/// is kept as its address.
template <class Parameter>
struct Argument {
    using Kept = Parameter;
    static Kept Keep(const Parameter& value) { return value; }

    explicit Argument(int seed)
        : object(Sample<Parameter>(seed)) {}
    Parameter& Pass() { return object; }

    Parameter object;
};

template <class T>
struct Argument<T&> {
    using Kept = T*;
    static Kept Keep(T& object) { return &object; }

    explicit Argument(int seed)
        : object(Sample<std::remove_const_t<T>>(seed)) {}
    T& Pass() { return object; }

    std::remove_const_t<T> object;
};

template <class T>
struct Argument<T*> {
    using Kept = T*;
    static Kept Keep(T* pointer) { return pointer; }

    explicit Argument(int seed)
        : object(Sample<std::remove_const_t<T>>(seed)) {}
    T* Pass() { return &object; }

    std::remove_const_t<T> object;
};

template <>
struct Argument<void*> : Argument<int*> {
    using Kept = void*;
    static Kept Keep(void* pointer) { return pointer; }
    using Argument<int*>::Argument;
};

template <>
struct Argument<IDriverCallback*> {
    using Kept = IDriverCallback*;
};

/// What a pointer to an operation says of it.
template <class Member>
struct OperationOf;

template <class Interface, class R, class... Parameters>
struct OperationOf<R (Interface::*)(Parameters...)> {
    using Result = R;
    using Kept = std::tuple<typename Argument<Parameters>::Kept...>;
    /// The parameters that are neither references nor pointers nor numbers.
    static constexpr bool takesRecords = ((std::is_class_v<Parameters>) || ...);

    /// A set of arguments, all different.
    class Arguments {
    public:
        explicit Arguments(int seed)
            : Arguments(seed, std::index_sequence_for<Parameters...>()) {}

        template <class Target, class Operation>
        Result Call(Target& target, Operation operation) {
            return std::apply([&](auto&... argument) { return (target.*operation)(argument.Pass()...); },
                              m_all);
        }
        Kept Keep() {
            return std::apply(
                [](auto&... argument) { return Kept(Argument<Parameters>::Keep(argument.Pass())...); },
                m_all);
        }
        std::tuple<Parameters...> Copy() requires(takesRecords) {
            return std::apply([](auto&... argument) { return std::tuple<Parameters...>(argument.Pass()...); },
                              m_all);
        }

    private:
        template <std::size_t... Places>
        Arguments(int seed, std::index_sequence<Places...> /*places*/)
            : m_all(Argument<Parameters>(seed + static_cast<int>(Places))...) {}

        std::tuple<Argument<Parameters>...> m_all;
    };

    template <class... Values>
    static Kept Keep(Values&... values) {
        return Kept(Argument<Parameters>::Keep(values)...);
    }
};

template <class Interface, class R, class... Parameters>
struct OperationOf<R (Interface::*)(Parameters...) const> : OperationOf<R (Interface::*)(Parameters...)> {};

/// What the last call of a partner was. Recording allocates nothing but the copies of records.
template <class Members>
class CallRecord;

template <class... Members>
class CallRecord<std::tuple<Members...>> {
public:
    template <std::size_t Place>
    using Operation = OperationOf<std::tuple_element_t<Place, std::tuple<Members...>>>;

    template <std::size_t Place, class... Values>
    typename Operation<Place>::Result Call(Values&... values) {
        ++m_count;
        m_last = Place;
        m_thread = std::this_thread::get_id();
        std::get<Place>(m_kept).emplace(Operation<Place>::Keep(values...));
        if constexpr (!std::is_void_v<typename Operation<Place>::Result>) {
            return Answer<typename Operation<Place>::Result>();
        }
    }

    /// Calls so far, of whatever operation.
    [[nodiscard]] int Count() const { return m_count; }
    /// Place of the last operation that was called.
    [[nodiscard]] std::size_t Last() const { return m_last; }
    [[nodiscard]] std::thread::id Thread() const { return m_thread; }
    /// The arguments of the last call of an operation; empty when it was never called.
    template <std::size_t Place>
    [[nodiscard]] const auto& Kept() const {
        return std::get<Place>(m_kept);
    }

    /// From now on the operations with a result answer values of this seed.
    void SetAnswers(int seed) {
        m_answers = {Sample<bool>(seed), Sample<int>(seed), Sample<long>(seed), Sample<QString>(seed)};
    }
    template <class Result>
    [[nodiscard]] Result Answer() const {
        return std::get<Result>(m_answers);
    }

private:
    int m_count = 0;
    std::size_t m_last = 0;
    std::thread::id m_thread;
    std::tuple<std::optional<typename OperationOf<Members>::Kept>...> m_kept;
    std::tuple<bool, int, long, QString> m_answers;
};

template <class Members>
using CallRecordOf = CallRecord<std::remove_const_t<Members>>;

#define ZAN_RECORD(place, identifier, result, name, parameters, arguments, constness)                        \
    result name parameters constness override {                                                              \
        return record.template Call<static_cast<std::size_t>(place::identifier)> arguments;                  \
    }
#define ZAN_RECORD_LEGACY(...) ZAN_RECORD(LegacyOperation, __VA_ARGS__)
#define ZAN_RECORD_CALLBACK(...) ZAN_RECORD(CallbackOperation, __VA_ARGS__)

class RecordingLegacyDriver final : public ILegacyDriver {
public:
    ZAN_LEGACY_DRIVER_OPERATIONS(ZAN_RECORD_LEGACY, ZAN_RECORD_LEGACY)

    mutable CallRecordOf<decltype(legacyDriverMembers<ILegacyDriver>)> record;
};

class RecordingCallback final : public IDriverCallback {
public:
    ZAN_CALLBACK_OPERATIONS(ZAN_RECORD_CALLBACK)

    CallRecordOf<decltype(callbackMembers<IDriverCallback>)> record;
};

#undef ZAN_RECORD_CALLBACK
#undef ZAN_RECORD_LEGACY
#undef ZAN_RECORD

} // namespace KvZANCommon
