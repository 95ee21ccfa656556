// The files that the program has open here: the chips' devices and the rediscovery file.
//
// What the program holds is one end of a pipe, made for each open. The pipe is known by its inode, whatever
// number it has in which process: dup, fork, exec and a descriptor that is passed on need no bookkeeping.
// When the last copy is closed, by whoever held it and however that process ended, the other end of the pipe
// shows it.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <mutex>

#include "driver/driver.h"

namespace gfast::desk {

// Closes a descriptor when it goes out of scope.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor();
  Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
  Descriptor& operator=(Descriptor&& other) noexcept;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int number() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }

 private:
  int number_ = -1;
};

// An open device. Its board descriptor is closed when neither the program nor a request needs it any more.
class OpenDevice {
 public:
  // Takes the board's descriptor over.
  OpenDevice(Driver& board, int boardDescriptor, Descriptor readiness)
      : board_(board), boardDescriptor_(boardDescriptor), readiness_(std::move(readiness)) {}
  ~OpenDevice() { board_.close(boardDescriptor_); }
  OpenDevice(const OpenDevice&) = delete;
  OpenDevice& operator=(const OpenDevice&) = delete;

  int boardDescriptor() const { return boardDescriptor_; }
  int readiness() const { return readiness_.number(); }

  // 0, or a negative errno.
  int request(uint32_t code, gfast_iocreq& envelope);

  // The program's end is readable exactly while the board's descriptor is.
  void showReadiness();
  bool abandoned() const;

 private:
  Driver& board_;
  const int boardDescriptor_;
  const Descriptor readiness_;
  bool shown_ = false;
};

class OpenFiles {
 public:
  explicit OpenFiles(Driver& board);

  // Readable when attend() has something to do.
  int attention() const { return epoll_.number(); }
  void attend();

  // The program's end of a newly opened file, to be given to it and closed here; without a number, errno
  // tells why there is none.
  Descriptor openDevice(int device, int flags);
  Descriptor openRediscovery();

  // The device behind a descriptor of the program; null: it is another file.
  std::shared_ptr<OpenDevice> find(const struct stat& file);

  // To be called when the board may have more or less to say than before.
  void showReadiness();

  // Does what the program has asked by closing files and by writing to the rediscovery file so far. To be
  // called before a request that it has made since.
  void settle();

  // While it is held, whoever settles waits. To be held while a file is given to the program and still open
  // here as well, since the program may have closed it meanwhile.
  std::unique_lock<std::mutex> holdSettling() { return std::unique_lock(settling_); }

 private:
  using Devices = std::map<ino_t, std::shared_ptr<OpenDevice>>;

  void watch(int descriptor, uint32_t events);
  Devices takeAbandoned();
  int takeRediscoveries();

  Driver& board_;
  Descriptor epoll_;
  std::mutex settling_;  // taken before the other
  std::mutex mutex_;     // guards everything below
  Devices devices_;
  struct Rediscovery {
    Descriptor reader;
    std::string line;
  };
  std::map<ino_t, Rediscovery> rediscoveries_;
};

}  // namespace gfast::desk
