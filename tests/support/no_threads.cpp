// For test programs that are marked with ONE_THREAD: the C++ library finds this function before the C
// library's.

#include <cstdio>
#include <cstdlib>

#include <pthread.h>

extern "C" int pthread_create(pthread_t* /*thread*/, const pthread_attr_t* /*attributes*/,
                              void* (* /*start*/)(void*), void* /*argument*/) noexcept {
  std::fputs("A test program that is marked with ONE_THREAD starts a thread.\n", stderr);
  std::abort();
}
