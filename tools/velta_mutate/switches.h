#pragma once

#include <cmath>
#include <cstdlib>
#include <utility>

/// The number of the change that is in force, from the environment; 0 for none.
extern "C" int velta_change;

/// Operators, numbers and calls that do what stands in the source until their change is in force.
///
/// `a < b` is written `a < Switch::Less(7) > b`: the operator on either side of the switch has the
/// precedence of the one that it stands for, so that the expression keeps its shape.
namespace Switch {

inline bool isOn(int change)
{
    return velta_change == change;
}

/// Ends the program with the code that tells that the change makes no program.
[[noreturn]] inline void refuse()
{
    std::_Exit(77);
}

template <class Value>
Value either(int change, Value plain, Value changed)
{
    return isOn(change) ? changed : plain;
}

struct Not {
    int change;
};

template <class Operand>
bool operator->*(Not opposite, const Operand& operand)
{
    return static_cast<bool>(operand) == isOn(opposite.change);
}

#define VELTA_BINARY(Name, before, after, plain, changed)                                            \
    struct Name {                                                                                  \
        int change;                                                                                \
    };                                                                                             \
    template <class Left>                                                                          \
    struct Name##Half {                                                                            \
        Left&& left;                                                                               \
        int change;                                                                                \
    };                                                                                             \
    template <class Left>                                                                          \
    Name##Half<Left> operator before(Left&& left, Name name)                                       \
    {                                                                                              \
        return {std::forward<Left>(left), name.change};                                            \
    }                                                                                              \
    template <class Left, class Right>                                                             \
    auto operator after(Name##Half<Left>&& half, Right&& right)                                    \
    {                                                                                              \
        using Result = std::decay_t<decltype(std::forward<Left>(half.left)                         \
                                                 plain std::forward<Right>(right))>;               \
        if (isOn(half.change)) {                                                                   \
            if constexpr (requires {                                                               \
                              static_cast<Result>(std::forward<Left>(half.left)                    \
                                                      changed std::forward<Right>(right));         \
                          })                                                                       \
                return static_cast<Result>(                                                        \
                    std::forward<Left>(half.left) changed std::forward<Right>(right));             \
            else                                                                                   \
                refuse();                                                                          \
        }                                                                                          \
        return static_cast<Result>(std::forward<Left>(half.left)                                   \
                                       plain std::forward<Right>(right));                          \
    }

VELTA_BINARY(Less, <, >, <, <=)
VELTA_BINARY(LessOrEqual, <, >, <=, <)
VELTA_BINARY(Greater, <, >, >, >=)
VELTA_BINARY(GreaterOrEqual, <, >, >=, >)
VELTA_BINARY(Equal, ==, ==, ==, !=)
VELTA_BINARY(Unequal, ==, ==, !=, ==)
VELTA_BINARY(Plus, +, +, +, -)
VELTA_BINARY(Minus, +, +, -, +)
VELTA_BINARY(Times, *, *, *, /)
VELTA_BINARY(Over, *, *, /, *)
VELTA_BINARY(Modulo, *, *, %, +)

#define VELTA_ASSIGNMENT(Name, plain, changed)                                                       \
    struct Name {                                                                                  \
        int change;                                                                                \
    };                                                                                             \
    template <class Right>                                                                         \
    struct Name##Half {                                                                            \
        Right&& right;                                                                             \
        int change;                                                                                \
    };                                                                                             \
    template <class Right>                                                                         \
    Name##Half<Right> operator<<=(Name name, Right&& right)                                        \
    {                                                                                              \
        return {std::forward<Right>(right), name.change};                                          \
    }                                                                                              \
    template <class Left, class Right>                                                             \
    Left& operator+=(Left& left, Name##Half<Right>&& half)                                         \
    {                                                                                              \
        if (!isOn(half.change))                                                                    \
            left plain std::forward<Right>(half.right);                                            \
        else if constexpr (requires { left changed std::forward<Right>(half.right); })             \
            left changed std::forward<Right>(half.right);                                          \
        else                                                                                       \
            refuse();                                                                              \
        return left;                                                                               \
    }

VELTA_ASSIGNMENT(Add, +=, -=)
VELTA_ASSIGNMENT(Subtract, -=, +=)
VELTA_ASSIGNMENT(Multiply, *=, /=)

struct Min {
    int change;

    template <class Value>
    const Value& operator()(const Value& one, const Value& other) const
    {
        return (other < one) != isOn(change) ? other : one;
    }
};

struct Max {
    int change;

    template <class Value>
    const Value& operator()(const Value& one, const Value& other) const
    {
        return (one < other) != isOn(change) ? other : one;
    }
};

struct Floor {
    int change;

    template <class Value>
    auto operator()(Value value) const
    {
        return isOn(change) ? std::ceil(value) : std::floor(value);
    }
};

struct Ceil {
    int change;

    template <class Value>
    auto operator()(Value value) const
    {
        return isOn(change) ? std::floor(value) : std::ceil(value);
    }
};

} // namespace Switch
