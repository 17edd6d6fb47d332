// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "system.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <system_error>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t LARGEST_FILE = 65536;
constexpr std::chrono::seconds LONGEST_CLEARING{10};
constexpr std::size_t LONGEST_OUTPUT = 1048576;

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

int succeed(int result, const std::string& what) {
  if (result < 0) fail(what);
  return result;
}

struct stat statusOf(int file) {
  struct stat status {};
  succeed(fstat(file, &status), "fstat");
  return status;
}

void closeInherited() {
  // Not every C library has a function for it.
  if (syscall(SYS_close_range, STDERR_FILENO + 1, ~0U, 0) == 0) return;
  // Before Linux 5.9. The limit tells nothing: it may have been lowered since they were opened.
  std::vector<int> numbers;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    numbers.push_back(std::stoi(entry.path().filename().string()));
  for (const int number : numbers)
    if (number > STDERR_FILENO) close(number);
}

void writeAll(int file, std::string_view content) {
  while (!content.empty()) {
    const ssize_t length = write(file, content.data(), content.size());
    if (length < 0 && errno == EINTR) continue;
    if (length < 0) fail("write");
    content.remove_prefix(static_cast<std::size_t>(length));
  }
}

void flush(int file) {
  while (fsync(file) != 0)
    if (errno != EINTR) fail("fsync");
}

Descriptor memoryFile(std::string_view content) {
  Descriptor file(succeed(memfd_create("", MFD_CLOEXEC), "memfd_create"));
  writeAll(file, content);
  succeed(static_cast<int>(lseek(file, 0, SEEK_SET)), "lseek");
  return file;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

struct Process {
  std::string name;
  pid_t parent = 0;
  Ticks start = now();
};

/** What is known of a process; nothing if it is gone. */
Process process(pid_t id) {
  Process found;
  std::ifstream file("/proc/" + std::to_string(id) + "/stat");
  std::string line;
  std::getline(file, line, '\0');  // 12 (name) state parent ...; a name may hold ends of lines
  const std::size_t name = line.find('(') + 1;
  const std::size_t end = line.rfind(')');
  if (end == std::string::npos) return found;
  found.name = line.substr(name, end - name);
  std::istringstream fields(line.substr(end + 1));
  std::string ignored;
  fields >> ignored >> found.parent;
  for (int field = 5; field < 22; ++field) fields >> ignored;
  fields >> found.start;
  return found;
}

void resetSignals() {
  for (int signal = 1; signal < NSIG; ++signal) (void)std::signal(signal, SIG_DFL);
}

/** What is in a folder; nothing if there is no descriptor for that. */
std::unique_ptr<DIR, int (*)(DIR*)> listOf(int folder) {
  return {fdopendir(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)), closedir};
}

/** The next name in a list; empty after the last one, and when the time is over. */
std::string nextName(DIR* list, Clock::time_point end) {
  if (list == nullptr || Clock::now() > end) return {};
  while (const dirent* entry = readdir(list)) {
    std::string name = entry->d_name;
    if (name != "." && name != "..") return name;
  }
  return {};
}

/**
 * Removes a folder with the files in it. The folders in it move up beside it: so it does not matter
 * how deep they are. Where there are too many others beside it, or no room for one more name, those
 * in them move up into it. Returns whether a folder is gone.
 */
// NOLINTNEXTLINE(misc-no-recursion): it ends where there are no more descriptors
bool dissolve(int parent, const std::string& name, Clock::time_point end) {
  const Descriptor folder(
      openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  // Something else that is mounted there is not ours to empty.
  if (folder < 0 || statusOf(folder).st_dev != statusOf(parent).st_dev) return false;
  try {
    give(folder, {0, 0, S_IRWXU});      // nobody adds to it from here on
  } catch (const std::system_error&) {  // there may be room for that when it is empty
  }
  bool isLess = false;
  const auto list = listOf(folder);
  for (auto inner = nextName(list.get(), end); !inner.empty(); inner = nextName(list.get(), end)) {
    if (unlinkat(folder, inner.c_str(), 0) == 0) continue;
    const int error = moveAside(folder, inner, parent);
    if (error == EMLINK || error == ENOSPC) isLess |= dissolve(folder, inner, end);
  }
  return unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0 || isLess;
}

}  // namespace

void Descriptor::close() {
  if (number >= 0) ::close(std::exchange(number, -1));
}

void forgetCaller() {
  clearenv();
  // Otherwise a keyfile would be opened as standard error, and messages be written to it.
  while (succeed(open("/dev/null", O_RDWR), "/dev/null") <= STDERR_FILENO) continue;
  closeInherited();

  resetSignals();
  // A terminal or session that goes must not stop us half-way, nor suspend us with the lock.
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGTSTP, SIGTTIN, SIGTTOU})
    (void)std::signal(signal, SIG_IGN);
  sigset_t none{};
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);

  for (const auto limit :
       {RLIMIT_AS, RLIMIT_CPU, RLIMIT_DATA, RLIMIT_FSIZE, RLIMIT_NOFILE, RLIMIT_STACK}) {
    const rlim_t plenty = limit == RLIMIT_NOFILE ? 1024 : RLIM_INFINITY;
    const rlimit wanted{plenty, plenty};
    if (setrlimit(limit, &wanted) == 0) continue;
    rlimit current{};  // without the capability, as much as there is to be had
    if (getrlimit(limit, &current) != 0) continue;
    current.rlim_cur = current.rlim_max;
    (void)setrlimit(limit, &current);
  }
  const rlimit nothing{0, 0};
  (void)setrlimit(RLIMIT_CORE, &nothing);  // it would hold passwords

  umask(S_IWGRP | S_IWOTH);  // the rest is told wherever something is made
  succeed(chdir("/"), "chdir");
}

Ticks now() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  const long ticks = sysconf(_SC_CLK_TCK);
  return Ticks{time.tv_sec} * ticks + time.tv_nsec / (1'000'000'000 / ticks);
}

Ticks calledAt() {
  Process first = process(getpid());
  for (Process parent = process(first.parent); parent.name == "sudo";
       parent = process(first.parent))
    first = parent;
  return first.start;
}

std::optional<Caller> callerOf(int connection) {
  ucred peer{};
  socklen_t length = sizeof(peer);
  if (getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) != 0) return std::nullopt;
  if (peer.uid == static_cast<uid_t>(-1)) return std::nullopt;
  // Another process may have the number of one that is gone: at worst he called when we began.
  return Caller{peer.uid, std::min(process(peer.pid).start, process(getpid()).start)};
}

std::string readAtMost(int file, std::size_t limit) {
  std::string content(limit, '\0');
  std::size_t length = 0;
  while (length < limit) {
    const ssize_t piece = read(file, &content[length], limit - length);
    if (piece < 0 && errno == EINTR) continue;
    if (piece < 0) fail("read");
    if (piece == 0) break;
    length += static_cast<std::size_t>(piece);
  }
  content.resize(length);
  return content;
}

Descriptor openFolder(const std::string& path) {
  return Descriptor(
      succeed(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC), path));
}

Descriptor openTrustedFolder(const std::string& path) {
  Descriptor folder = openFolder(path);
  const struct stat status = statusOf(folder);
  if (status.st_uid != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
    throw Refusal(path + " can be written by others than root");
  return folder;
}

void makeFolder(const std::string& path, mode_t mode) {
  if (mkdir(path.c_str(), mode) != 0 && errno != EEXIST) fail(path);
}

uid_t ownerOf(int file) { return statusOf(file).st_uid; }

gid_t groupOf(int file) { return statusOf(file).st_gid; }

void give(int file, const Access& access) {
  // First away from whoever has it now, and last to whoever gets it: nobody can interfere.
  succeed(fchown(file, 0, access.group), "fchown");
  // The owner of a folder may have added lists to it: one for the folder, one for new files in it.
  for (const char* list : {"system.posix_acl_access", "system.posix_acl_default"}) {
    // Where there is none: a file system without room may fail before it notices.
    if (fgetxattr(file, list, nullptr, 0) < 0 && (errno == ENODATA || errno == EOPNOTSUPP))
      continue;
    succeed(fremovexattr(file, list), list);
  }
  succeed(fchmod(file, access.mode), "fchmod");
  if (access.user != 0) succeed(fchown(file, access.user, access.group), "fchown");
}

std::optional<std::string> take(int folder, const std::string& name, uid_t owner) {
  // Not waiting: neither for the writer of a FIFO nor for the holder of a lease.
  const Descriptor file(
      openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (file < 0 && errno == ENOENT) return std::nullopt;
  // A link, a socket, or a file with a lease. Otherwise it may be a file like any other.
  if (file < 0 && (errno == ELOOP || errno == ENXIO || errno == EAGAIN))
    throw Refusal(name + " cannot be opened, or is a link");
  if (file < 0) fail(name);
  const struct stat status = statusOf(file);
  if (!S_ISREG(status.st_mode)) throw Refusal(name + " is no plain file");
  if (status.st_uid != owner) throw Refusal(name + " has another owner");
  // None has what was replaced since it was opened: it is as whole as the new one.
  if (status.st_nlink > 1) throw Refusal(name + " has another name as well");
  std::string content = readAtMost(file, LARGEST_FILE + 1);
  if (content.size() > LARGEST_FILE) throw Refusal(name + " is too large");
  return content;
}

void put(int folder, const std::string& name, std::string_view content, const Access& access,
         Lasting lasting) {
  // NetworkManager does not look at such a name, and a leftover of a kill has no other.
  const std::string temporary = name + "~";
  if (unlinkat(folder, temporary.c_str(), 0) != 0 && errno != ENOENT) fail(temporary);
  {
    const Descriptor file(
        succeed(openat(folder, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                       S_IRUSR | S_IWUSR),
                temporary));
    writeAll(file, content);
    give(file, access);
    if (lasting == Lasting::YES) flush(file);
  }
  succeed(renameat(folder, temporary.c_str(), folder, name.c_str()), name);
  if (lasting == Lasting::YES) flush(folder);
}

void drop(int folder, const std::string& name, Lasting lasting) {
  if (unlinkat(folder, name.c_str(), 0) != 0 && errno != ENOENT) fail(name);
  if (lasting == Lasting::YES) flush(folder);
}

Descriptor makeNewFolder(int folder, const std::string& name) {
  succeed(mkdirat(folder, name.c_str(), S_IRWXU), name);
  return Descriptor(
      succeed(openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC), name));
}

int moveAside(int folder, const std::string& name, int target) {
  static unsigned moved = 0;
  for (;;) {
    const std::string newName = "moved." + std::to_string(++moved);
    if (renameat(folder, name.c_str(), target, newName.c_str()) == 0) return 0;
    if (errno != EEXIST && errno != ENOTEMPTY && errno != ENOTDIR && errno != EISDIR) return errno;
  }
}

void exchange(int folder, const std::string& one, const std::string& other) {
  // The kernel has it; not every C library has a function for it.
  succeed(static_cast<int>(
              syscall(SYS_renameat2, folder, one.c_str(), folder, other.c_str(), RENAME_EXCHANGE)),
          other);
}

void clear(int folder) {
  const auto end = Clock::now() + LONGEST_CLEARING;
  bool isDone = false;
  while (!isDone) {
    isDone = true;
    const auto list = listOf(folder);
    for (auto name = nextName(list.get(), end); !name.empty(); name = nextName(list.get(), end)) {
      // What came out of a folder may stand before the place that was reached in the list.
      if (unlinkat(folder, name.c_str(), 0) != 0 && dissolve(folder, name, end)) isDone = false;
    }
  }
}

Outcome run(std::vector<std::string> arguments, std::string_view input, unsigned seconds) {
  std::vector<std::string> environment = {"PATH=/usr/bin:/bin", "LANG=C.UTF-8"};
  const std::vector<char*> argumentList = pointersTo(arguments);
  const std::vector<char*> environmentList = pointersTo(environment);
  const Descriptor in = memoryFile(input);
  const Descriptor out = memoryFile("");
  const pid_t child = succeed(fork(), "fork");
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setsid();  // away from Ctrl+C on the caller's terminal
    resetSignals();
    // Its messages may quote a password.
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (dup2(in, STDIN_FILENO) >= 0 && dup2(out, STDOUT_FILENO) >= 0 &&
        dup2(null, STDERR_FILENO) >= 0) {
      alarm(seconds);  // goes on in the new program
      execve(argumentList.front(), argumentList.data(), environmentList.data());
    }
    _exit(NOT_RUN);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) fail("waitpid");
  }
  succeed(static_cast<int>(lseek(out, 0, SEEK_SET)), "lseek");
  return {status, readAtMost(out, LONGEST_OUTPUT)};
}
