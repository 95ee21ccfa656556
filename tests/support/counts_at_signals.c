/*
 * Linked into every program that tools/coverage builds: one that a signal, abort() or a fault ends writes
 * what it has counted, too. Many tests end a console that serves, and that is how.
 */
#include <signal.h>
#include <stddef.h>

extern void __gcov_dump(void);

static void writeCountsAndEnd(int number) {
  __gcov_dump();
  raise(number); /* the second time without this handler */
}

__attribute__((constructor)) static void writeCountsAtSignals(void) {
  static const int kEnding[] = {SIGTERM, SIGABRT, SIGSEGV, SIGINT, SIGHUP, SIGQUIT};
  for (size_t i = 0; i < sizeof kEnding / sizeof kEnding[0]; i++) {
    struct sigaction action = {.sa_handler = writeCountsAndEnd, .sa_flags = (int)SA_RESETHAND};
    struct sigaction before;
    if (sigaction(kEnding[i], NULL, &before) == 0 && before.sa_handler == SIG_DFL) {
      sigaction(kEnding[i], &action, NULL);
    }
  }
}
