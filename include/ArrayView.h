#pragma once

/// @file
/// A read-only view of an array: what the tables of the library are handed out as.

#include <cstddef>
#if __cplusplus >= 202002L
#include <span>
#endif

namespace Korvex2 {

/// The elements of an array that lives elsewhere, in order. Of the size of a pointer and a number,
/// to be passed by value; copies see the same elements. The views that the library hands out are of
/// tables that live as long as the process. Usable in constant expressions; nothing throws.
///
/// The headers serve C++17, which has no std::span. Under C++20 a view converts to one by itself:
///
///     std::span<const PixelFormatInfo> formats = PixelFormats();
template <typename T>
class ArrayView {
 public:
  using value_type = T;              ///< of an element
  using size_type = std::size_t;     ///< of numbers of elements
  using reference = const T&;        ///< to an element
  using const_reference = const T&;  ///< to an element
  using iterator = const T*;         ///< from one element to the next
  using const_iterator = const T*;   ///< from one element to the next

  /// No elements.
  constexpr ArrayView() noexcept = default;
  /// `size` elements from *data on; not owned.
  constexpr ArrayView(const T* data, std::size_t size) noexcept : m_data(data), m_size(size) {}
  /// All elements of an array; not owned.
  template <std::size_t N>
  constexpr ArrayView(const T (&array)[N]) noexcept : m_data(array), m_size(N) {}

  /// The first element; null where there is none.
  constexpr const T* data() const noexcept { return m_data; }
  /// How many elements there are.
  constexpr std::size_t size() const noexcept { return m_size; }
  /// Whether there is none.
  constexpr bool empty() const noexcept { return m_size == 0; }

  /// The first element.
  constexpr const T* begin() const noexcept { return m_data; }
  /// Past the last element.
  constexpr const T* end() const noexcept { return m_data + m_size; }

  /// An element by its position, which must be less than size().
  constexpr const T& operator[](std::size_t position) const noexcept { return m_data[position]; }
  /// The first of at least one.
  constexpr const T& front() const noexcept { return m_data[0]; }
  /// The last of at least one.
  constexpr const T& back() const noexcept { return m_data[m_size - 1]; }

 private:
  const T* m_data = nullptr;
  std::size_t m_size = 0;
};

}  // namespace Korvex2

#if __cplusplus >= 202002L
/// @cond
// An iterator may outlive the view that it came from.
template <typename T>
inline constexpr bool std::ranges::enable_borrowed_range<Korvex2::ArrayView<T>> = true;
/// @endcond
#endif
