#ifndef OPERATIONS_H
#define OPERATIONS_H

#include "ozdebug.h"

#include <type_traits>
#include <utility>

class OzJournal;

// Which operations a class has, asked at compile time. An operation is a template that names the type of its
// result, for a constant object unless it changes the object.

template <class T, template <class> class Operation, class = void>
struct Detector : std::false_type
{
};
template <class T, template <class> class Operation>
struct Detector<T, Operation, std::void_t<Operation<T>>> : std::true_type
{
};

template <class T, template <class> class... Operations>
constexpr bool has_all = (Detector<T, Operations>::value && ...);
template <class T, template <class> class... Operations>
constexpr bool has_none = !(Detector<T, Operations>::value || ...);

/// The class of positions for a class of vectors, and the other way round; named by each test.
template <class T>
struct PartnerOf;
template <class T>
using Partner = typename PartnerOf<T>::type;

template <class T>
T const& constant();
template <class T>
T& variable();

template <class T>
using PlusSame = decltype(constant<T>() + constant<T>());
template <class T>
using PlusPartner = decltype(constant<T>() + constant<Partner<T>>());
template <class T>
using MinusSame = decltype(constant<T>() - constant<T>());
template <class T>
using MinusPartner = decltype(constant<T>() - constant<Partner<T>>());
template <class T>
using Negation = decltype(-constant<T>());
template <class T>
using TimesNumber = decltype(constant<T>() * 2.0);
template <class T>
using NumberTimes = decltype(2.0 * constant<T>());
template <class T>
using TimesSame = decltype(constant<T>() * constant<T>());
template <class T>
using TimesPartner = decltype(constant<T>() * constant<Partner<T>>());
template <class T>
using RemainderSame = decltype(constant<T>() % constant<T>());
template <class T>
using OverNumber = decltype(constant<T>() / 2.0);
template <class T>
using AddSame = decltype(variable<T>() += constant<T>());
template <class T>
using AddPartner = decltype(variable<T>() += constant<Partner<T>>());
template <class T>
using SubtractSame = decltype(variable<T>() -= constant<T>());
template <class T>
using SubtractPartner = decltype(variable<T>() -= constant<Partner<T>>());
template <class T>
using MultiplyBy = decltype(variable<T>() *= 2.0);
template <class T>
using DivideBy = decltype(variable<T>() /= 2.0);
template <class T>
using Equals = decltype(constant<T>() == constant<T>());
template <class T>
using Dim = decltype(T::dim());
template <class T>
using AsArray = decltype(constant<T>().as_array());
template <class T>
using ConstantIndex = decltype(constant<T>()[0]);
template <class T>
using VariableIndex = decltype(variable<T>()[0]);
template <class T>
using Reverse = decltype(constant<T>().reverse());
template <class T>
using Length = decltype(constant<T>().length());
template <class T>
using NumericalZero = decltype(constant<T>().numerical_zero());
template <class T>
using Normalize = decltype(variable<T>().normalize());
template <class T>
using Angle = decltype(constant<T>().angle(constant<T>()));
template <class T>
using Ortho = decltype(constant<T>().ortho());
template <class T>
using Turn = decltype(constant<T>().turn(1.0));
template <class T>
using Debug = decltype(constant<T>().debug(variable<OzJournal>(), OZ_DEBUG_CONTENTS, true, 0));
template <class T>
using U = decltype(constant<T>().u());
template <class T>
using V = decltype(constant<T>().v());
template <class T>
using W = decltype(constant<T>().w());
template <class T>
using Du = decltype(constant<T>().du());
template <class T>
using Dv = decltype(constant<T>().dv());
template <class T>
using Dw = decltype(constant<T>().dw());
template <class T>
using SetU = decltype(variable<T>().set_u(1.0));
template <class T>
using SetV = decltype(variable<T>().set_v(1.0));
template <class T>
using SetW = decltype(variable<T>().set_w(1.0));
template <class T>
using SetDu = decltype(variable<T>().set_du(1.0));
template <class T>
using SetDv = decltype(variable<T>().set_dv(1.0));
template <class T>
using SetDw = decltype(variable<T>().set_dw(1.0));

/// Whether T is a plain value of `n` adjacent numbers, made from them or from an array.
template <class T, int n>
constexpr bool is_plain_value =
    sizeof(T) == n * sizeof(double) &&
    std::is_standard_layout_v<T>&& std::is_trivially_copyable_v<T>&& std::is_trivially_destructible_v<T> &&
    !std::is_polymorphic_v<T> && std::is_default_constructible_v<T> &&
    std::is_constructible_v<T, double const*> && !std::is_convertible_v<double const*, T>;

#endif
