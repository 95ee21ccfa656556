// Refers weakly to a thread function that no library has.
extern "C" int pthread_of_nobody(int value) __attribute__((weak));

int main(int argc, char**) {
  return argc > 100 ? pthread_of_nobody(argc) : 0;
}
