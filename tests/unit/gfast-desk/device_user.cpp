// A program that uses the driver's files in the way that its argument names, and exits with 0 if all was as
// it should be; otherwise it says on standard error what was not.
#include <fcntl.h>
#include <gfast_api.h>
#include <linux/openat2.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "driver/envelope.h"
#include "driver/kernel_driver.h"

using namespace gfast;

namespace {

#define CHECK(condition)                                                                         \
  do {                                                                                           \
    if (!(condition)) {                                                                          \
      std::fprintf(stderr, "line %d: not so: %s (%s)\n", __LINE__, #condition, strerror(errno)); \
      std::exit(1);                                                                              \
    }                                                                                            \
  } while (false)

#define CHECK_FAILS(call, error)             \
  do {                                       \
    errno = 0;                               \
    CHECK((call) == -1 && errno == (error)); \
  } while (false)

constexpr const char* kDevice = "/dev/gfdfe0";

int openDevice(int flags = O_RDWR) {
  const int device = open(kDevice, flags);
  CHECK(device >= 0);
  return device;
}

// What the board answers to a request without a buffer.
int ask(int device, uint32_t code) {
  gfast_iocreq request = emptyRequest();
  CHECK(ioctl(device, code, &request) == 0);
  return request.retcode;
}

int openCount(int device) {
  return ask(device, DFEIOCGETRESULT);
}

bool answers(int device) {
  gfast_iocreq request = emptyRequest();
  return ioctl(device, DFEIOCGETRESULT, &request) == 0;
}

gfast_iocreq readRequest(char* buffer, uint16_t length) {
  gfast_iocreq request = emptyRequest();
  request.req_u.memread = {0xE0000041, length, buffer, length, 0, 0};
  return request;
}

gfast_iocreq farEndRequest(char* buffer, uint32_t size, uint16_t hundredths = 0) {
  gfast_iocreq request = emptyRequest();
  request.req_u.farendmsg = {hundredths, 0, buffer, size, size, size, 0};
  return request;
}

int waitFor(pid_t child) {
  int status = 0;
  CHECK(waitpid(child, &status, 0) == child);
  return status;
}

void opens() {
  CHECK(fcntl(openDevice(), F_GETFD) == 0);
  CHECK(fcntl(openDevice(O_RDWR | O_CLOEXEC), F_GETFD) == FD_CLOEXEC);
  CHECK((fcntl(openDevice(), F_GETFL) & O_ACCMODE) == O_RDWR);
  const int last = openDevice();
  CHECK(openDevice() == last + 1);
  CHECK(openat(AT_FDCWD, kDevice, O_RDWR) >= 0);
  CHECK(syscall(SYS_openat, AT_FDCWD, kDevice, O_RDWR, 0) >= 0);
#ifdef SYS_open
  CHECK(syscall(SYS_open, kDevice, O_RDWR, 0) >= 0);
#endif
  open_how how{};
  how.flags = O_RDWR | O_CLOEXEC;
  const auto second = static_cast<int>(syscall(SYS_openat2, AT_FDCWD, kDevice, &how, sizeof how));
  CHECK(second >= 0 && fcntl(second, F_GETFD) == FD_CLOEXEC);
  CHECK(openCount(second) == 9);
}

void refusals() {
  CHECK_FAILS(open(kDevice, O_RDONLY), EACCES);
  CHECK_FAILS(open(kDevice, O_WRONLY), EACCES);
  CHECK_FAILS(creat(kDevice, 0600), EACCES);
  CHECK_FAILS(open(kDevice, O_RDWR | O_DIRECTORY), ENOTDIR);
  CHECK_FAILS(open(kDevice, O_RDWR | O_CREAT | O_EXCL, 0600), EEXIST);
  CHECK_FAILS(open("/dev/gfdfe1", O_RDWR), ENODEV);
  for (const char* other :
       {"/dev/gfdfe", "/dev/gfdfe2", "/dev/gfdfe00", "/dev/gfdfe01", "/dev/gfdfe0/x", "gfdfe0"}) {
    CHECK_FAILS(open(other, O_RDWR), ENOENT);
  }
  CHECK_FAILS(syscall(SYS_openat, AT_FDCWD, nullptr, O_RDWR, 0), EFAULT);
  CHECK_FAILS(open("/proc/gfast/rediscover", O_RDONLY), EACCES);
  CHECK_FAILS(open("/proc/gfast/rediscovery", O_WRONLY), ENOENT);
  const int device = openDevice();
  rlimit most{static_cast<rlim_t>(device) + 1, static_cast<rlim_t>(device) + 1};
  CHECK(setrlimit(RLIMIT_NOFILE, &most) == 0);
  CHECK_FAILS(open(kDevice, O_RDWR), EMFILE);
  CHECK(openCount(device) == 1);
}

void copies() {
  const int first = openDevice();
  const int copy = dup(first);
  CHECK(dup2(first, 100) == 100);
  CHECK(dup3(first, 101, O_CLOEXEC) == 101);
  const int another = fcntl(first, F_DUPFD, 200);
  const int closing = fcntl(first, F_DUPFD_CLOEXEC, 200);
  close(first);
  for (const int each : {copy, 100, 101, another, closing}) {
    CHECK(openCount(each) == 1);
    close(each);
    CHECK_FAILS(ioctl(each, DFEIOCGETRESULT, nullptr), EBADF);
  }
  CHECK(openCount(openDevice()) == 1);
  // Over another file, and another file over it.
  const int file = open("/dev/null", O_RDWR);
  CHECK(dup2(openDevice(), file) == file && answers(file));
  CHECK(dup2(STDERR_FILENO, file) == file && !answers(file));
}

void processes() {
  const int device = openDevice();
  const pid_t child = fork();
  if (child == 0) {
    close(openDevice());
    CHECK(openCount(device) == 1);
    openDevice();
    CHECK(openCount(device) == 2);
    raise(SIGKILL);
  }
  CHECK(WTERMSIG(waitFor(child)) == SIGKILL);
  CHECK(openCount(device) == 1);

  // A child may be the only one left that has it.
  int link[2];
  CHECK(pipe(link) == 0);
  const pid_t heir = fork();
  char byte = 0;
  if (heir == 0) {
    CHECK(read(link[0], &byte, 1) == 1);
    CHECK(openCount(device) == 2);
    _exit(0);
  }
  close(device);
  const int own = openDevice();
  CHECK(openCount(own) == 2);
  CHECK(write(link[1], &byte, 1) == 1);
  CHECK(waitFor(heir) == 0);
  CHECK(openCount(own) == 1);
}

// Becomes this program once more: 100 was opened to be closed then, 101 to stay.
void executes() {
  CHECK(dup3(openDevice(), 100, O_CLOEXEC) == 100 && dup2(openDevice(), 101) == 101);
  closefrom(102);
  for (int i = STDERR_FILENO + 1; i < 100; i++) {
    close(i);
  }
  CHECK(openCount(101) == 2);
  execl("/proc/self/exe", "device_user", "executed", nullptr);
  CHECK(false);
}

void executed() {
  CHECK_FAILS(ioctl(100, DFEIOCGETRESULT, nullptr), EBADF);
  CHECK(openCount(101) == 1);
}

void otherFiles() {
  int link[2];
  CHECK(pipe(link) == 0);
  gfast_iocreq request = emptyRequest();
  CHECK_FAILS(ioctl(link[0], DFEIOCGETRESULT, &request), ENOTTY);
  CHECK_FAILS(ioctl(link[1], DFEIOCGETRESULT, &request), ENOTTY);
  CHECK_FAILS(ioctl(open("/dev/null", O_RDWR), DFEIOCGETRESULT, &request), ENOTTY);
  CHECK_FAILS(ioctl(-1, DFEIOCGETRESULT, &request), EBADF);
  // Codes that are not the driver's.
  CHECK_FAILS(ioctl(openDevice(), 0xC0084B01, &request), ENOTTY);
  CHECK_FAILS(ioctl(openDevice(), 0xC0044A01, &request), ENOTTY);
  CHECK_FAILS(ioctl(openDevice(), DFEIOC_REQUEST_CODE(0), &request), EIO);
  CHECK_FAILS(ioctl(openDevice(), DFEIOC_REQUEST_CODE(255), &request), EIO);
}

char* pages(size_t count, int protection) {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  void* const memory =
      mmap(nullptr, (count + 1) * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  CHECK(memory != MAP_FAILED);
  CHECK(mprotect(static_cast<char*>(memory) + count * page, page, protection) == 0);
  return static_cast<char*>(memory);
}

void pointers() {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  const int device = openDevice();
  char* const nothing = pages(1, PROT_NONE) + page;
  char* const fixed = pages(1, PROT_READ) + page;
  gfast_iocreq request = readRequest(nothing, 4);
  CHECK_FAILS(ioctl(device, DFEIOCMEMRD, nullptr), EFAULT);
  CHECK_FAILS(ioctl(device, DFEIOCMEMRD, nothing), EFAULT);
  CHECK_FAILS(ioctl(device, DFEIOCMEMRD, nothing - 8), EFAULT);
  CHECK_FAILS(ioctl(device, DFEIOCGETRESULT, fixed), EFAULT);
  CHECK_FAILS(ioctl(device, DFEIOCMEMRD, &request), EFAULT);
  request = readRequest(fixed, 4);
  CHECK_FAILS(ioctl(device, DFEIOCMEMRD, &request), EFAULT);
  CHECK(fixed[0] == 0);
  request = readRequest(reinterpret_cast<char*>(UINTPTR_MAX - 1), 4);
  CHECK_FAILS(ioctl(device, DFEIOCMEMRD, &request), EFAULT);
  CHECK_FAILS(ioctl(device, DFEIOCMEMWR, &request), EFAULT);
  // Up to the last byte that is there.
  request = readRequest(nothing - 4, 4);
  CHECK(ioctl(device, DFEIOCMEMRD, &request) == 0 && std::memcmp(nothing - 4, "AAAA", 4) == 0);
  CHECK(ioctl(device, DFEIOCMEMWR, &request) == 0);
  nothing[-1] = 'B';
  CHECK_FAILS(ioctl(device, DFEIOCMEMWR, &request), EBADMSG);
  std::strcpy(nothing - sizeof "/dev/gfdfe0", kDevice);
  CHECK(open(nothing - sizeof "/dev/gfdfe0", O_RDWR) >= 0);
  CHECK_FAILS(open(nothing, O_RDWR), EFAULT);
}

void sizes() {
  const int device = openDevice();
  std::vector<char> buffer(65537, 'a');
  gfast_iocreq request = farEndRequest(buffer.data(), 65536);
  CHECK(ioctl(device, DFEIOCFARENDMSG, &request) == 0);
  CHECK(std::string(buffer.begin(), buffer.end()) == std::string(65536, 'b') + 'a');
  CHECK(request.req_u.farendmsg.buf == buffer.data() &&
        request.req_u.farendmsg.datalen_copied_to_user == 65536);
  request = farEndRequest(buffer.data(), 65537);
  CHECK_FAILS(ioctl(device, DFEIOCFARENDMSG, &request), EINVAL);
  // What the driver does not fill stays.
  buffer.assign(16, 'x');
  request = readRequest(buffer.data(), 4);
  request.req_u.memread.bufsize = 16;
  CHECK(ioctl(device, DFEIOCMEMRD, &request) == 0);
  CHECK(std::string(buffer.begin(), buffer.end()) == "AAAAxxxxxxxxxxxx");
}

void setPending(int device, bool pending) {
  gfast_iocreq request = emptyRequest();
  request.req_u.setporttag.port_idx = pending ? 1 : 0;
  CHECK(ioctl(device, DFEIOCSETPORTTAG, &request) == 0);
}

bool selects(int device) {
  fd_set set;
  FD_ZERO(&set);
  FD_SET(device, &set);
  timeval now{};
  return select(device + 1, &set, nullptr, nullptr, &now) == 1;
}

void readiness() {
  const int device = openDevice();
  const int other = openDevice();
  for (int i = 0; i < 3; i++) {
    CHECK(!selects(device));
    setPending(device, true);
    CHECK(selects(device) && !selects(other));
    pollfd file{device, POLLIN | POLLPRI, 0};
    CHECK(poll(&file, 1, 0) == 1 && file.revents == POLLIN);
    setPending(device, false);
  }
  // A select that waits is woken.
  std::thread later([device] {
    usleep(50000);
    setPending(device, true);
  });
  pollfd file{device, POLLIN, 0};
  CHECK(poll(&file, 1, 10000) == 1);
  later.join();
}

// While one thread waits for the far end, another is served.
void threads() {
  const int device = openDevice();
  char byte = 0;
  std::thread slow([device, &byte] {
    gfast_iocreq request = farEndRequest(&byte, 1, 100);
    CHECK(ioctl(device, DFEIOCFARENDMSG, &request) == 0);
  });
  while (ask(device, DFEIOCDEVINFO) == 0) {
    usleep(1000);
  }
  const int another = openDevice();
  CHECK(openCount(another) == 2);
  CHECK(byte == 0);
  // What is closed meanwhile stays the board's until the exchange is over.
  close(device);
  CHECK(openCount(another) == 2);
  slow.join();
  CHECK(byte == 1);
  CHECK(openCount(another) == 1);
}

volatile sig_atomic_t caught = 0;

// What is asked once is asked once, whatever signals the program catches meanwhile.
void signals() {
  const int device = openDevice();
  struct sigaction action {};
  action.sa_handler = [](int) { caught = caught + 1; };
  action.sa_flags = SA_RESTART;
  CHECK(sigaction(SIGALRM, &action, nullptr) == 0);
  const itimerval often{{0, 5000}, {0, 5000}};
  CHECK(setitimer(ITIMER_REAL, &often, nullptr) == 0);
  char byte = 0;
  gfast_iocreq request = farEndRequest(&byte, 1, 10);
  CHECK(ioctl(device, DFEIOCFARENDMSG, &request) == 0);
  const itimerval never{};
  CHECK(setitimer(ITIMER_REAL, &never, nullptr) == 0);
  CHECK(caught > 0);
  CHECK(byte == 1 && ask(device, DFEIOCDEVINFO) == 1);
}

void rediscovers() {
  const auto write = [](const char* text) {
    const int file = open("/proc/gfast/rediscover", O_WRONLY | O_CREAT | O_TRUNC, 0666);
    CHECK(file >= 0 && ::write(file, text, std::strlen(text)) >= 0);
    close(file);
  };
  write("1\n");
  write("1");
  for (const char* other : {"", "0\n", "0", "11\n", "2\n", "1x\n", "11111111111111111111111\n"}) {
    write(other);
  }
  openDevice();
}

// As the library uses it; the test lists what is to arrive.
void kernelDriver() {
  KernelDriver driver;
  const int first = driver.open(0);
  CHECK(first >= 0);
  std::array<char, 1024> buffer{};
  gfast_iocreq request = readRequest(buffer.data(), 4);
  CHECK(driver.request(first, DFEIOCMEMRD, request) == 0 && std::memcmp(buffer.data(), "\1\2\3\4", 4) == 0);
  request = readRequest(buffer.data(), 4);
  CHECK(driver.request(first, DFEIOCMEMWR, request) == 0);
  CHECK_FAILS(driver.request(first, DFEIOCMEMRD, request), EIO);
  request = emptyRequest();
  request.req_u.logalm_read = {buffer.data(), buffer.size(), 0, 0};
  CHECK(driver.request(first, DFEIOCALMRD, request) == 0);
  CHECK(request.req_u.logalm_read.datalen_copied_to_user == 12 && buffer[8] == 4);
  CHECK(driver.open(1) == -1 && errno == ENODEV);
  driver.close(first);
  driver.rediscover();
  const int second = driver.open(1);
  CHECK(second >= 0);
  driver.close(second);
  CHECK(fcntl(second, F_GETFD) == -1 && errno == EBADF);
}

#ifdef __x86_64__
// getpid, as a 32-bit program asks for it, and as one with short pointers does.
void call32Bit() {
  long result = 20;
  asm volatile("int $0x80" : "+a"(result) : : "memory", "r8", "r9", "r10", "r11");
}

void callShortPointers() {
  syscall(0x40000000 + SYS_getpid);
}
#endif

const std::map<std::string, void (*)()> kScenarios{
    {"opens", opens},
    {"refusals", refusals},
    {"copies", copies},
    {"processes", processes},
    {"executes", executes},
    {"executed", executed},
    {"other-files", otherFiles},
    {"pointers", pointers},
    {"sizes", sizes},
    {"readiness", readiness},
    {"threads", threads},
    {"signals", signals},
    {"rediscovers", rediscovers},
    {"kernel-driver", kernelDriver},
#ifdef __x86_64__
    {"call-32-bit", call32Bit},
    {"call-short-pointers", callShortPointers},
#endif
};

}  // namespace

int main(int argc, char* argv[]) {
  CHECK(argc == 2 && kScenarios.contains(argv[1]));
  kScenarios.at(argv[1])();
}
