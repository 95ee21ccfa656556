/* libcli compares passwords with crypt, which this console has none of: no user is ever added and enable asks
   nothing. On the board it answers that nothing matches, and a library less is linked. */
#include <stddef.h>

char *crypt(const char *phrase, const char *setting);

char *crypt(const char *phrase, const char *setting) {
  (void)phrase;
  (void)setting;
  return NULL;
}
