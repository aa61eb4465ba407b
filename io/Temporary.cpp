#include "io/Temporary.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

namespace Korvex2::Io {
namespace {

// What a process that is told to stop has to remove. A signal handler reads this, so there is no
// lock: a path is written while its place is taken and not yet listed.
struct Place {
  std::atomic<bool> taken;
  std::atomic<bool> listed;
  char path[PATH_MAX];
};

Place g_places[TemporaryFile::kMost];

// Files that other threads are about to create or to move. They are waited for before the list is
// read, and none is begun afterwards.
std::atomic<int> g_placing;
std::atomic<bool> g_stopping;

static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

struct StoppingSignal {
  int number;
  std::string_view message;
};

constexpr StoppingSignal kSignals[] = {
    {SIGINT, "korvex2: stopped by SIGINT; no unfinished file is left\n"},
    {SIGTERM, "korvex2: stopped by SIGTERM; no unfinished file is left\n"},
    {SIGHUP, "korvex2: stopped by SIGHUP; no unfinished file is left\n"},
    {SIGQUIT, "korvex2: stopped by SIGQUIT; no unfinished file is left\n"},
    {SIGPIPE, ""},  // which is how most pipelines end
};

sigset_t StoppingSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const StoppingSignal& signal : kSignals) {
    sigaddset(&set, signal.number);
  }
  return set;
}

extern "C" void RemoveFilesAndDie(int number) {
  g_stopping = true;
  while (g_placing > 0) {
    sched_yield();
  }
  for (const Place& place : g_places) {
    if (place.listed) {
      unlink(place.path);
    }
  }
  std::signal(SIGPIPE, SIG_IGN);  // of the message
  for (const StoppingSignal& signal : kSignals) {
    if (signal.number == number && !signal.message.empty()) {
      (void)!write(STDERR_FILENO, signal.message.data(), signal.message.size());
    }
  }
  std::signal(number, SIG_DFL);
  raise(number);  // arrives when the handler is left
}

std::atomic<bool> g_interrupted;

extern "C" void FinishOrDie(int number) {
  if (g_interrupted.exchange(true)) {
    RemoveFilesAndDie(number);
  }
}

// While one lives, this thread creates or moves a file and takes no signal that would wait for
// that.
class Placing {
 public:
  Placing() {
    const sigset_t signals = StoppingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, &m_before);
    ++g_placing;
    if (g_stopping) {
      --g_placing;
      for (;;) {
        pause();  // the process ends any moment
      }
    }
  }
  Placing(const Placing&) = delete;
  Placing& operator=(const Placing&) = delete;
  ~Placing() {
    const int reason = errno;
    --g_placing;
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    errno = reason;
  }

 private:
  sigset_t m_before;
};

int TakePlace() {
  for (int i = 0; i < TemporaryFile::kMost; ++i) {
    if (!g_places[i].taken.exchange(true)) {
      return i;
    }
  }
  return -1;
}

void LeavePlace(Place& place) {
  place.listed = false;
  place.taken = false;
}

// A process that was killed may have left a file, and another one may have its number again.
std::string NameBeside(const std::string& target, int attempt) {
  const std::filesystem::path path(target);
  const std::string name = path.filename().string().substr(0, 200);
  return (path.parent_path() / fmt::format(".{}.{}-{}.tmp", name, getpid(), attempt)).string();
}

int CreateAt(Place& place, const std::string& path) {
  if (path.size() >= sizeof place.path) {
    errno = ENAMETOOLONG;
    return -1;
  }
  const Placing placing;
  std::memcpy(place.path, path.c_str(), path.size() + 1);
  const int fd = open(place.path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  place.listed = fd >= 0;
  return fd;
}

}  // namespace

void RemoveUnfinishedFilesWhenStopped() {
  struct sigaction action {};
  action.sa_handler = RemoveFilesAndDie;
  action.sa_mask = StoppingSignals();
  for (const StoppingSignal& signal : kSignals) {
    struct sigaction before;
    if (sigaction(signal.number, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
      sigaction(signal.number, &action, nullptr);
    }
  }
  std::signal(SIGXFSZ, SIG_IGN);
}

FinishWhenInterrupted::FinishWhenInterrupted() {
  g_interrupted = false;
  struct sigaction action {};
  action.sa_handler = FinishOrDie;
  action.sa_mask = StoppingSignals();
  action.sa_flags = SA_RESTART;
  if (sigaction(SIGINT, nullptr, &m_before) == 0 && m_before.sa_handler != SIG_IGN) {
    sigaction(SIGINT, &action, nullptr);
  }
}

FinishWhenInterrupted::~FinishWhenInterrupted() {
  sigaction(SIGINT, &m_before, nullptr);
}

bool FinishWhenInterrupted::WasInterrupted() const {
  return g_interrupted;
}

void FinishWhenInterrupted::End(const std::function<void()>& say) const {
  std::signal(SIGINT, SIG_DFL);
  while (g_stopping) {  // by another thread's handler, which says its own
    pause();
  }
  say();
  raise(SIGINT);
  _exit(128 + SIGINT);  // where the signal is blocked
}

TemporaryFile::TemporaryFile(const std::string& target) : m_place(TakePlace()) {
  if (m_place < 0) {
    errno = EMFILE;
    return;
  }
  constexpr int kAttempts = 1000;
  errno = EEXIST;
  for (int attempt = 0; m_fd < 0 && errno == EEXIST && attempt < kAttempts; ++attempt) {
    m_fd = CreateAt(g_places[m_place], NameBeside(target, attempt));
  }
}

TemporaryFile::~TemporaryFile() {
  if (m_place >= 0) {
    Place& place = g_places[m_place];
    if (place.listed) {
      unlink(place.path);
    }
    LeavePlace(place);
  }
}

bool TemporaryFile::MoveTo(const std::string& target) {
  Place& place = g_places[m_place];
  const Placing placing;
  if (std::rename(place.path, target.c_str()) != 0) {
    return false;
  }
  place.listed = false;
  return true;
}

}  // namespace Korvex2::Io
