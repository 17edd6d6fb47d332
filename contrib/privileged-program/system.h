// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What the privileged program needs of the operating system. What fails throws std::system_error;
// what was found and must not be taken throws a Refusal. Neither text holds bytes of a file.

/** Something that the user left is not what it has to be. */
class Refusal : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** A file descriptor, closed with its owner. */
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : number(descriptor) {}
  Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() { close(); }

  /** Before its owner goes: what is open keeps its room. */
  void close();

  operator int() const { return number; }  // NOLINT(google-explicit-constructor)

 private:
  int number;
};

/** Who a file or folder belongs to, and who may do what with it. */
struct Access {
  uid_t user;
  gid_t group;
  mode_t mode;
};

/** Whether a file has to outlive a power cut from the moment that it has its name. */
enum class Lasting { NO, YES };

/** Frees the process of all that its caller can hand down: environment, signals, limits, files. */
void forgetCaller();

/**
 * Hundredths of a second, or whatever the kernel's ticks are, since the start of the system. In 32
 * bits they would be used up after 248 days.
 */
using Ticks = std::int64_t;

Ticks now();

/** Who asks, and when he began to: like now(). */
struct Caller {
  uid_t user;
  Ticks calledAt;
};

/** When our caller began to call us: by way of sudo, which may have taken long. */
Ticks calledAt();

/**
 * Who is at the other end of a connection, as the kernel has noted it; nothing if it is no local
 * one. His call began with his process, which may have waited long to be heard, or be gone by now.
 */
std::optional<Caller> callerOf(int connection);

/** What can be read up to the end, or to a limit. */
std::string readAtMost(int file, std::size_t limit);

/** Opens a folder, never through a link as the last step of its path. */
Descriptor openFolder(const std::string& path);

/** The same for a folder into which nobody but root may write. */
Descriptor openTrustedFolder(const std::string& path);

/** Makes a folder with a mode, unless it is there. */
void makeFolder(const std::string& path, mode_t mode);

uid_t ownerOf(int file);
gid_t groupOf(int file);

/** Gives a file or folder away, or takes it back with all that access lists allow. */
void give(int file, const Access& access);

/**
 * The bytes of a file; nothing if there is none. It must be a plain file of one name and of the
 * given owner, up to 64 KiB; anything else is refused, and neither followed nor waited for. It is
 * looked at once: what the user does to it later has no effect.
 */
std::optional<std::string> take(int folder, const std::string& name, uid_t owner);

/** Replaces a file by a new one, at once and as a whole. */
void put(int folder, const std::string& name, std::string_view content, const Access& access,
         Lasting lasting);

/** Removes a file, unless there is none. */
void drop(int folder, const std::string& name, Lasting lasting);

/** Makes a folder, for root alone, that must not be there yet. */
Descriptor makeNewFolder(int folder, const std::string& name);

/**
 * Moves what has a name, if anything has, to a name in another folder whose files are not needed:
 * one of them, or an empty folder, may be replaced by it. Returns why not, as an errno; else 0.
 */
int moveAside(int folder, const std::string& name, int target);

/** Has two names in a folder change what they name, at once. */
void exchange(int folder, const std::string& one, const std::string& other);

/**
 * Removes what is in a folder; not what is mounted there, or is another file system. What ten
 * seconds do not suffice for stays: users can make files faster than they can be removed.
 */
void clear(int folder);

/** What a program ends with that could not be run. */
inline constexpr int NOT_RUN = 127;

/** How a program ended, as waitpid() tells it, and what it printed. */
struct Outcome {
  int status;
  std::string output;
};

/**
 * Runs a program by its full path, in a session of its own, with nothing of ours but the bytes for
 * its standard input. It is killed when it takes longer than its limit, or when we end.
 */
Outcome run(std::vector<std::string> arguments, std::string_view input, unsigned seconds);
