#include "qvrcli/text/local_time.h"

namespace gfast::console {

std::string localTimeText(time_t time) {
  tm local{};
  localtime_r(&time, &local);
  char text[30];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S+%Z", &local)};
}

}  // namespace gfast::console
