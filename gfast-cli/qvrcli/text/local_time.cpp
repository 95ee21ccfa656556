#include "qvrcli/text/local_time.h"

namespace gfast::console {

namespace {

constexpr size_t kUsualRoom = 32;  // the name of a zone may need more

}  // namespace

std::string localTimeText(time_t time) {
  tm local{};
  localtime_r(&time, &local);
  std::string text(kUsualRoom, '\0');
  size_t length = 0;
  while ((length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S+%Z", &local)) == 0) {
    text.resize(2 * text.size());
  }
  text.resize(length);
  return text;
}

}  // namespace gfast::console
