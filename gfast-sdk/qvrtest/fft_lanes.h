// How butterflies lie in a processor's vector registers. Which of these sets exist depends on the
// instructions that the including file is compiled for.
#pragma once

#include <cstddef>

namespace gfast {

namespace {

// One butterfly at a time, for processors without vectors.
struct OneLane {
  using Vector = double;
  static constexpr size_t kWidth = 1;

  static Vector load(const double* from) { return *from; }
  static void store(double* to, Vector v) { *to = v; }
  static Vector all(double value) { return value; }
  static Vector magnitude(Vector v) { return __builtin_fabs(v); }
  static double sum(Vector v) { return v; }

  // Between pairs in memory and vectors of real and of imaginary parts.
  static void split(const double* pairs, Vector& re, Vector& im) {
    re = pairs[0];
    im = pairs[1];
  }
  static void join(double* pairs, Vector re, Vector im) {
    pairs[0] = re;
    pairs[1] = im;
  }

  // Stores lane l of the four vectors as four values in a row. Their place is the bit-reversed number of the
  // point that lane l holds after `split`.
  static void storeRows(double* to, size_t /*size*/, Vector a, Vector b, Vector c, Vector d) {
    to[0] = a;
    to[1] = b;
    to[2] = c;
    to[3] = d;
  }
};

#ifdef __SSE2__
struct TwoLanes {
  using Vector = double __attribute__((vector_size(16)));
  // In memory it may begin at any double.
  struct __attribute__((packed, may_alias)) Anywhere {
    Vector v;
  };
  using Bits = long long __attribute__((vector_size(16)));
  static constexpr size_t kWidth = 2;

  static Vector load(const double* from) { return reinterpret_cast<const Anywhere*>(from)->v; }
  static void store(double* to, Vector v) { reinterpret_cast<Anywhere*>(to)->v = v; }
  static Vector all(double value) { return Vector{value, value}; }
  static Vector magnitude(Vector v) {
    constexpr long long kNoSign = 0x7FFFFFFFFFFFFFFF;
    return reinterpret_cast<Vector>(reinterpret_cast<Bits>(v) & Bits{kNoSign, kNoSign});
  }
  static double sum(Vector v) { return v[0] + v[1]; }

  static void split(const double* pairs, Vector& re, Vector& im) {
    const Vector first = load(pairs);
    const Vector second = load(pairs + 2);
    re = __builtin_shufflevector(first, second, 0, 2);
    im = __builtin_shufflevector(first, second, 1, 3);
  }
  static void join(double* pairs, Vector re, Vector im) {
    store(pairs, __builtin_shufflevector(re, im, 0, 2));
    store(pairs + 2, __builtin_shufflevector(re, im, 1, 3));
  }

  static void storeRows(double* to, size_t size, Vector a, Vector b, Vector c, Vector d) {
    store(to, __builtin_shufflevector(a, b, 0, 2));
    store(to + 2, __builtin_shufflevector(c, d, 0, 2));
    store(to + size / 2, __builtin_shufflevector(a, b, 1, 3));
    store(to + size / 2 + 2, __builtin_shufflevector(c, d, 1, 3));
  }
};
#endif

#ifdef __AVX2__
struct FourLanes {
  using Vector = double __attribute__((vector_size(32)));
  // In memory it may begin at any double.
  struct __attribute__((packed, may_alias)) Anywhere {
    Vector v;
  };
  using Bits = long long __attribute__((vector_size(32)));
  static constexpr size_t kWidth = 4;

  static Vector load(const double* from) { return reinterpret_cast<const Anywhere*>(from)->v; }
  static void store(double* to, Vector v) { reinterpret_cast<Anywhere*>(to)->v = v; }
  static Vector all(double value) { return Vector{value, value, value, value}; }
  static Vector magnitude(Vector v) {
    constexpr long long kNoSign = 0x7FFFFFFFFFFFFFFF;
    return reinterpret_cast<Vector>(reinterpret_cast<Bits>(v) & Bits{kNoSign, kNoSign, kNoSign, kNoSign});
  }
  static double sum(Vector v) { return (v[0] + v[1]) + (v[2] + v[3]); }

  // The lanes hold points 0, 2, 1 and 3: this order takes one instruction instead of two.
  static void split(const double* pairs, Vector& re, Vector& im) {
    const Vector first = load(pairs);
    const Vector second = load(pairs + 4);
    re = __builtin_shufflevector(first, second, 0, 4, 2, 6);
    im = __builtin_shufflevector(first, second, 1, 5, 3, 7);
  }
  static void join(double* pairs, Vector re, Vector im) {
    const Vector even = __builtin_shufflevector(re, im, 0, 4, 2, 6);
    const Vector odd = __builtin_shufflevector(re, im, 1, 5, 3, 7);
    store(pairs, __builtin_shufflevector(even, odd, 0, 1, 4, 5));
    store(pairs + 4, __builtin_shufflevector(even, odd, 2, 3, 6, 7));
  }

  static void storeRows(double* to, size_t size, Vector a, Vector b, Vector c, Vector d) {
    const Vector ab02 = __builtin_shufflevector(a, b, 0, 4, 2, 6);
    const Vector ab13 = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const Vector cd02 = __builtin_shufflevector(c, d, 0, 4, 2, 6);
    const Vector cd13 = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    store(to, __builtin_shufflevector(ab02, cd02, 0, 1, 4, 5));
    store(to + size / 4, __builtin_shufflevector(ab13, cd13, 0, 1, 4, 5));
    store(to + size / 2, __builtin_shufflevector(ab02, cd02, 2, 3, 6, 7));
    store(to + size / 4 * 3, __builtin_shufflevector(ab13, cd13, 2, 3, 6, 7));
  }
};
#endif

}  // namespace

}  // namespace gfast
