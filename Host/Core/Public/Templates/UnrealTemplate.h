#pragma once

#include <type_traits>
#include <utility>

/** std::move that refuses what cannot be moved: constants and temporaries. */
template <class T>
constexpr std::remove_reference_t<T>&& MoveTemp(T&& Object) noexcept
{
	static_assert(std::is_lvalue_reference_v<T>, "MoveTemp called on a temporary");
	static_assert(!std::is_const_v<std::remove_reference_t<T>>, "MoveTemp called on a constant");
	return static_cast<std::remove_reference_t<T>&&>(Object);
}
