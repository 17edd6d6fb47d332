// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "keyfile.h"
#include "system.h"

namespace {

// What the window edits. It belongs to the user from "unlock" to "rollback", and it is never more
// than a copy: NetworkManager reads the installed files.
constexpr const char* WORKING_COPY = "/etc/NetworkManager/system-connections";
// Each new working copy is a new folder. What a user has done to the old one stays with that, and
// so does the time that it takes to remove it.
constexpr const char* PARENT = "/etc/NetworkManager";
constexpr const char* COPY_NAME = "system-connections";
// Names that nobody gives a backup: whatever has them is emptied.
constexpr const char* NEXT_COPY_NAME = ".zor-network-new";
constexpr const char* OLD_COPIES = "/etc/NetworkManager/.zor-network-old";
// Its group is the one whose members may read the working copy also while it is locked.
constexpr const char* STATE = "/var/lib/zor-network";
constexpr const char* INSTALLED = "/var/lib/zor-network/connections";
constexpr const char* RUN = "/run/zor-network";
// What was in the working copy when it was locked: a "rollback" may overtake the "finalize" that it
// follows. It is there from the first "rollback" after an "unlock" to the next "unlock".
constexpr const char* SET_ASIDE = "/run/zor-network/set-aside";  // a folder for each user
// A session lasts from the end of an "unlock" to the call of the "rollback" that locked the working
// copy; to when that was at work, if it was called before the session.
constexpr const char* UNLOCKED_AT = "unlocked-at";  // in RUN
constexpr const char* LOCKED_AT = "locked-at";      // with what was set aside
constexpr const char* LOCK = "/run/zor-network/lock";
constexpr const char* PLACES = "/run/zor-network/places";          // a byte for each
constexpr const char* RECORD = "ethernet-settings";                // in RUN
constexpr const char* RECORD_BEFORE = "ethernet-settings.before";  // until a new file is taken
// For everybody: how each request ended last, in a file of its name. The lock is not theirs.
constexpr const char* ENDINGS = "/run/zor-network/outcome";
constexpr const char* ENDINGS_LOCK = "/run/zor-network/outcome-lock";

constexpr const char* NMCLI = "/usr/bin/nmcli";
// Seconds. A DHCP server that does not answer is given up by NetworkManager after 45.
constexpr unsigned LONGEST_QUESTION = 10;
constexpr unsigned LONGEST_REQUEST = 60;
constexpr const char* LONGEST_ACTIVATION = "60";

constexpr std::array<Connection, 2> CONNECTIONS = {ETHERNET, WIFI};
constexpr std::size_t KEY_LENGTH = 64;     // hexadecimal, in the place of a password
constexpr std::size_t LONGEST_ID = 99;     // the window cuts it there
constexpr std::size_t LONGEST_CALL = 128;  // action, id and their ends
constexpr unsigned LONGEST_SILENCE = 5;
constexpr off_t MOST_AT_ONCE = 24;  // of a user's connections

constexpr const char* SPEAKER = "zor-network-permissions-handler: ";

constexpr uid_t ROOT = 0;
constexpr gid_t ROOT_GROUP = 0;

using Words = std::vector<std::string>;  // an action, and an id

enum ExitStatus { DONE = 0, NOT_DONE = 1, WRONG_CALL = 2 };

struct Request : Caller {  // of ROOT, if no user asks
  std::string_view action;
  std::string_view id;
};

struct Message {
  int priority;
  std::string text;
};

/** What the log and the caller are told when all else is done: their readers can block us. */
std::vector<Message>& messages() {
  static std::vector<Message> all;
  return all;
}

void note(const std::string& text) { messages().push_back({LOG_NOTICE, text}); }

void complain(const std::string& text) { messages().push_back({LOG_ERR, text}); }

/** The complaints, each as a line that begins with something. */
std::string complaintsAfter(std::string_view start) {
  std::string lines;
  for (const Message& message : messages())
    if (message.priority == LOG_ERR) lines.append(start).append(message.text) += '\n';
  return lines;
}

/** Any user may have filled the log's socket: what waits for its reader ends with our time. */
void writeLog() {
  alarm(LONGEST_REQUEST);
  for (const Message& message : messages()) syslog(message.priority, "%s", message.text.c_str());
}

/** A text of the user's that cannot be mistaken for anything else in a log. */
std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char character : text) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte >= ' ' && byte <= '~' && byte != '"' && byte != '\\') {
      result += character;
    } else {
      std::array<char, 5> code{};
      std::snprintf(code.data(), code.size(), "\\x%02x", byte);
      result += code.data();
    }
  }
  return result + '"';
}

/** Opens a file for locks, which go with the descriptor. */
Descriptor openForLocks(const char* path) {
  Descriptor file(open(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (file < 0) throw std::system_error(errno, std::generic_category(), path);
  return file;
}

/** Waits until no other request is at work. The lock goes with the descriptor. */
Descriptor lock() {
  Descriptor file = openForLocks(LOCK);
  // The kernel ends what takes too long, and with it the lock. Whatever it is doing then, every
  // change of a file is a whole one, and the next request puts the working copy right.
  alarm(LONGEST_REQUEST);
  if (flock(file, LOCK_EX | LOCK_NB) != 0) {
    note("waiting for another request");
    if (flock(file, LOCK_EX) != 0) throw Refusal("no lock can be had");
  }
  alarm(LONGEST_REQUEST);
  return file;
}

/** What a working copy lacks; empty texts for nothing. */
struct Lacks {
  std::string newFolder;  // why none could take its place: the old one was emptied and filled
  std::string file;       // which installed one could not be read: a folder has its name
};

/** By name. Nothing for one that cannot be read, which is noted as lacking. */
using InstalledFiles = std::map<std::string, std::optional<std::string>>;

bool hasLine(const std::string& content, const std::string& line) {
  return ("\n" + content + "\n").find("\n" + line + "\n") != std::string::npos;
}

/** Whether a file is of the other connection's type, by which the window would take it for that. */
bool isOfOther(const Connection& connection, const std::string& content) {
  const Connection& other = connection.type == WIFI.type ? ETHERNET : WIFI;
  return hasLine(content, "type=" + std::string(other.type));
}

InstalledFiles readInstalled(Lacks& lacks) {
  const Descriptor folder = openTrustedFolder(INSTALLED);
  InstalledFiles files;
  for (const Connection& connection : CONNECTIONS) {
    try {
      auto content = take(folder, connection.file, ROOT);
      if (!content) continue;
      if (isOfOther(connection, *content))
        throw Refusal(std::string(connection.file) + " is of another type");
      files[connection.file] = std::move(content);
    } catch (const Refusal& refusal) {  // no reason to lock everybody out
      complain(std::string("not in the working copy: ") + refusal.what());
    } catch (const std::exception& error) {  // nor is a bad block
      files[connection.file] = std::nullopt;
      lacks.file = std::string("not in the working copy: ") + connection.file + ", " + error.what();
    }
  }
  return files;
}

/** Whether NetworkManager can take what has a name: a file of root's alone, or a link of root's. */
bool canBeTaken(int folder, const std::string& name) {
  struct stat status {};
  if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return true;
  const bool isForRoot = S_ISREG(status.st_mode) && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
  return status.st_uid == ROOT && name.back() != '~' && (isForRoot || S_ISLNK(status.st_mode));
}

/**
 * Refuses a folder that was not made here if it holds anything else than what is installed: it may
 * never have been moved to where NetworkManager looks.
 */
void requireInstalled(int folder, const InstalledFiles& contents, bool isReaders) {
  for (const auto& entry : std::filesystem::directory_iterator(WORKING_COPY)) {
    const std::string name = entry.path().filename();
    // It is of a copy that was locked, but not renewed.
    if (isReaders && !canBeTaken(folder, name)) continue;
    const auto same = contents.find(name);
    if (same == contents.end() || take(folder, name, ROOT) != same->second)
      throw Refusal(std::string("there are files that are not installed in ") + WORKING_COPY);
  }
}

/** The name under which the window makes a new form of a file. */
std::string newFormOf(const Connection& connection) {
  std::string name = connection.file;
  name.back() = '~';
  return name;
}

/** What there was no time to remove must not have a name that is needed. */
void freeNames(int folder) {
  for (const Connection& connection : CONNECTIONS) {
    const std::string file = connection.file;
    for (const std::string& name : {file, file + "~", newFormOf(connection)}) {
      if (unlinkat(folder, name.c_str(), 0) != 0) moveAside(folder, name, folder);
    }
  }
}

/**
 * Puts a new folder in the place of an emptied working copy, if it can: the old one may keep the
 * room of all names that it ever held until it is removed.
 */
void replaceEmptied(int parent, gid_t readers) {
  if (!std::filesystem::is_empty(WORKING_COPY)) return;
  if (rmdir(OLD_COPIES) != 0) return;  // it has the room that the new one needs
  try {
    give(makeNewFolder(parent, NEXT_COPY_NAME), {ROOT, readers, 0750});
    exchange(parent, NEXT_COPY_NAME, COPY_NAME);
  } catch (const std::system_error&) {  // a mount point: the old one will do
  }
  (void)unlinkat(parent, NEXT_COPY_NAME, AT_REMOVEDIR);
  makeFolder(OLD_COPIES, 0700);
}

/**
 * Makes the working copy anew from the installed files: the user's, or locked if that is root. At
 * the start of the system one that was locked already is removed at once: no window looks at it.
 */
Lacks makeWorkingCopy(uid_t user, bool isStart = false) {
  const gid_t readers = groupOf(openTrustedFolder(STATE));
  if (readers == ROOT_GROUP) throw Refusal(std::string(STATE) + " needs a group of its own");
  Descriptor workingCopy = openFolder(WORKING_COPY);
  // Whoever it belongs to, one that was never made here may hold files of others. Two of three
  // signs do: a user can change the group, and what stands beside a mount point may be lost.
  const bool isUsers = ownerOf(workingCopy) != ROOT;
  const bool isReaders = groupOf(workingCopy) == readers;
  const bool isOurs =
      std::filesystem::exists(OLD_COPIES) ? isUsers || isReaders : isUsers && isReaders;
  const auto lockFolder = [&] { give(workingCopy, {ROOT, readers, 0750}); };
  try {
    if (isOurs) lockFolder();           // first, whatever fails
  } catch (const std::system_error&) {  // it is root's, and there may be room for the rest below
  }
  Lacks lacks;
  const InstalledFiles contents = readInstalled(lacks);
  if (!isOurs) requireInstalled(workingCopy, contents, isReaders);

  const auto fill = [&](int folder) {
    for (const auto& [name, content] : contents) {
      const mode_t mode = user == ROOT ? 0640 : 0600;
      if (content) {
        put(folder, name, *content, {user, readers, mode}, Lasting::NO);
      } else {  // without it, the file would look removed, and a save would replace it
        makeNewFolder(folder, name);
      }
    }
    const mode_t mode = user == ROOT ? 0750 : 0700;
    give(folder, {user, readers, mode});
  };
  const Descriptor parent = openTrustedFolder(PARENT);
  // A replaced one that was emptied, and not removed: there may be no room beside it.
  (void)unlinkat(parent, NEXT_COPY_NAME, AT_REMOVEDIR);
  makeFolder(OLD_COPIES, 0700);
  Descriptor old = openFolder(OLD_COPIES);
  try {
    give(old, {ROOT, ROOT_GROUP, 0700});  // whatever it was
    lockFolder();
    moveAside(parent, NEXT_COPY_NAME, old);  // a leftover of a kill, perhaps once a user's
    fill(makeNewFolder(parent, NEXT_COPY_NAME));
    // At once: the window may be looking for its files already.
    exchange(parent, NEXT_COPY_NAME, COPY_NAME);
    if (isStart && !isUsers) {  // each start would leave one, until a user asks for something
      for (const Connection& connection : CONNECTIONS)
        (void)unlinkat(workingCopy, connection.file, 0);
      (void)unlinkat(parent, NEXT_COPY_NAME, AT_REMOVEDIR);
    }
    moveAside(parent, NEXT_COPY_NAME, old);
  } catch (const std::system_error& error) {
    // Mount points, and folders of an image below another layer, cannot be renamed. Or the user has
    // taken all the room: what he leaves behind gives it back.
    moveAside(parent, NEXT_COPY_NAME, old);
    clear(old);
    clear(workingCopy);
    lockFolder();
    freeNames(workingCopy);
    old.close();
    workingCopy.close();
    if (error.code() == std::errc::no_space_on_device) replaceEmptied(parent, readers);
    fill(openFolder(WORKING_COPY));
    lacks.newFolder = error.what();
  }
  return lacks;
}

/** Removes old working copies, while no other request waits. What is left is the next one's. */
void removeOldCopies() try {
  clear(openTrustedFolder(OLD_COPIES));
} catch (const std::exception&) {  // there is none, or another request is at it
}

/** Where a user's files are set aside. Its being there says that he had unlocked. */
std::string setAsideOf(uid_t user) { return std::string(SET_ASIDE) + "/" + std::to_string(user); }

/** Notes a time in a folder of root's. */
void noteTime(int folder, const char* name, Ticks time) {
  put(folder, name, std::to_string(time), {ROOT, ROOT, 0600}, Lasting::NO);
}

/** A time that was noted; 0 if none was. */
Ticks timeOf(int folder, const char* name) {
  return std::strtoll(take(folder, name, ROOT).value_or("").c_str(), nullptr, 10);
}

/** A file of the user's; nothing if there is none. Refused if a new form did not get its name. */
std::optional<std::string> takeSaved(int folder, const Connection& connection, uid_t user) {
  auto content = take(folder, connection.file, user);
  if (faccessat(folder, newFormOf(connection).c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0)
    throw Refusal(std::string(connection.file) + " was not saved to the end");
  return content;
}

/** Keeps the files of an open working copy, as the same user's and by the same rules. */
void setAside(const Request& request) {
  const Descriptor workingCopy = openFolder(WORKING_COPY);
  const uid_t user = ownerOf(workingCopy);
  if (user == ROOT) return;  // locked already; what is set aside stays
  // A call from before the session, as one that waited for sudo, locks it only now.
  const bool isOlder = request.calledAt < timeOf(openTrustedFolder(RUN), UNLOCKED_AT);
  Ticks lockedAt = isOlder ? now() : request.calledAt;
  // Of the same tick, the user's own follows a save. Another's may come before it.
  if (request.user != user) --lockedAt;
  makeFolder(SET_ASIDE, 0700);
  makeFolder(setAsideOf(user), 0700);
  const Descriptor folder = openTrustedFolder(setAsideOf(user));
  drop(folder, LOCKED_AT, Lasting::NO);
  for (const Connection& connection : CONNECTIONS) {
    drop(folder, connection.file, Lasting::NO);
    std::optional<std::string> content;
    try {
      content = takeSaved(workingCopy, connection, user);
    } catch (const std::exception& error) {
      complain(std::string("not set aside: ") + error.what());
      content = "";  // is refused too; with no file, the user would seem to have removed it
    }
    if (content) put(folder, connection.file, *content, {user, ROOT, 0600}, Lasting::NO);
  }
  // Last: half of what was there would say that the user has removed the other half.
  noteTime(folder, LOCKED_AT, lockedAt);
}

void forgetSetAside() {
  makeFolder(SET_ASIDE, 0700);
  clear(openTrustedFolder(SET_ASIDE));
}

bool succeeded(const Outcome& outcome) {
  return WIFEXITED(outcome.status) && WEXITSTATUS(outcome.status) == 0;
}

/** A file as NetworkManager's own parser writes it again; empty if that does not take it. */
std::string asParsed(std::string_view content) {
  const Outcome parsed =
      run({NMCLI, "--offline", "connection", "modify", "connection.autoconnect", "yes"}, content,
          LONGEST_QUESTION);
  // No fault of the file's.
  if (!WIFEXITED(parsed.status) || WEXITSTATUS(parsed.status) == NOT_RUN)
    throw std::runtime_error("nmcli does not answer");
  return succeeded(parsed) ? parsed.output : "";
}

/** Whether a network can have a password, which is told as NetworkManager writes it. */
bool isPassword(std::string_view text) {
  std::size_t length = 0;
  for (std::size_t at = 0; at < text.size(); at += text[at] == '\\' ? 2 : 1) ++length;
  constexpr std::string_view HEXADECIMAL = "0123456789abcdefABCDEF";
  return (length >= 8 && length < KEY_LENGTH) ||
         (length == KEY_LENGTH && text.find_first_not_of(HEXADECIMAL) == std::string_view::npos);
}

/** Has NetworkManager read the installed files. Returns whether it answers. */
bool reload() try {
  return succeeded(run({NMCLI, "connection", "reload"}, "", LONGEST_QUESTION));
} catch (const std::system_error&) {  // it was not even asked
  return false;
}

/**
 * The UUID of the connection that NetworkManager has taken a file for; empty if it has not, which
 * it says in no other way.
 */
std::string takenAs(const Connection& connection) {
  const Outcome list =
      run({NMCLI, "-t", "-f", "FILENAME,UUID", "connection", "show"}, "", LONGEST_QUESTION);
  if (!succeeded(list)) throw std::runtime_error("NetworkManager does not tell what it has read");
  // Users give other files their names, with ends of lines in them. "/" becomes another character
  // there, and ":" gets a backslash in front.
  const std::string name = std::string(INSTALLED) + "/" + connection.file + ":";
  const std::size_t found = list.output.find(name);
  if (found == std::string::npos) return {};
  const std::size_t start = found + name.size();
  return list.output.substr(start, list.output.find('\n', start) - start);
}

/** The window's note about Ethernet; nothing if there is none. Root may have made /tmp a link. */
std::optional<std::string> takeRecord(uid_t user) {
  return take(openFolder("/tmp/."), "ethernetUpdateSettings", user);
}

/** Whether the window's note is of other settings than those that a file holds. */
bool isRecordOfOthers(uid_t user, const Settings& settings) try {
  const auto record = takeRecord(user);
  return record && record->size() == RECORD_SIZE && *record != recordOf(settings);
} catch (const std::exception&) {  // it is not the user's, or cannot be read
  return false;
}

/** Hands the window's note about Ethernet on, if it is the user's own and tells the truth. */
void publishRecord(uid_t user, const Settings& settings) try {
  const std::string expected = recordOf(settings);
  const auto record = takeRecord(user);
  if (!record) throw Refusal("it is missing");
  if (expected.empty() || *record != expected) throw Refusal("it differs from the keyfile");
  put(openTrustedFolder(RUN), RECORD, expected, {ROOT, ROOT, 0644}, Lasting::NO);
} catch (const std::exception& error) {  // no reason not to activate
  complain(std::string("the update record is not handed on: ") + error.what());
}

void unlock(const Request& request) {
  const Descriptor locked = lock();
  forgetSetAside();
  const std::string lackingFile = makeWorkingCopy(request.user).file;
  try {
    noteTime(openTrustedFolder(RUN), UNLOCKED_AT, now());
  } catch (const std::exception&) {  // who is told that nothing was done has nothing open
    makeWorkingCopy(ROOT);
    throw;
  }
  note("unlocked for user " + std::to_string(request.user));
  if (!lackingFile.empty()) throw std::runtime_error(lackingFile);
}

void rollback(const Request& request) {
  const Descriptor locked = lock();
  try {
    setAside(request);
  } catch (const std::exception& error) {  // the working copy is locked all the same
    complain(std::string("not set aside: ") + error.what());
  }
  const Lacks lacks = makeWorkingCopy(ROOT, request.user == ROOT);
  // For those who install it, and read the log of a start.
  if (request.user == ROOT && !lacks.newFolder.empty())
    complain(std::string("no new folder can take the place of ") + WORKING_COPY + ": " +
             lacks.newFolder);
  note("locked");
  if (!lacks.file.empty()) throw std::runtime_error(lacks.file);
}

/**
 * The folder with the files of the user's session: the working copy, or where a rollback has put
 * them. What was asked for before or after the session saw a locked working copy: its file is not
 * what was saved.
 */
Descriptor openSession(const Request& request) {
  Descriptor workingCopy = openFolder(WORKING_COPY);
  const uid_t owner = ownerOf(workingCopy);
  if (owner != request.user && owner != ROOT) throw Refusal("the working copy is another user's");
  const Ticks unlockedAt = timeOf(openTrustedFolder(RUN), UNLOCKED_AT);
  const bool isOpen = owner == request.user;
  const std::string path = setAsideOf(request.user);
  if (unlockedAt == 0 || (!isOpen && access((path + "/" + LOCKED_AT).c_str(), F_OK) != 0))
    throw Refusal("nothing was unlocked before");
  if (request.calledAt < unlockedAt)
    throw Refusal("it was asked for before the working copy was unlocked");
  if (isOpen) return workingCopy;
  Descriptor folder = openTrustedFolder(path);
  if (request.calledAt > timeOf(folder, LOCKED_AT))
    throw Refusal("it was asked for after the working copy was locked");
  return folder;
}

/** Checks a file of the user's, with all that can be said before it is NetworkManager's. */
Settings check(const Connection& connection, const std::string& content,
               const std::optional<std::string>& installed) {
  Settings settings = readKeyfile(connection, content);
  // Of two files with one UUID, NetworkManager drops one: it could be an administrator's.
  const auto uuid = settings.find("connection.uuid");
  if (uuid != settings.end() && !hasLine(installed.value_or(""), "uuid=" + uuid->second))
    throw Refusal("a UUID that the installed file does not have");
  const std::string parsed = asParsed(content);
  if (parsed.empty()) throw Refusal("NetworkManager cannot read it");
  // What it cannot read of these it leaves out: an access point gets another address, a client asks
  // for the password. There may be no name server.
  for (const std::string name : {"ipv4.address1", "ipv4.dns", "wifi-security.psk"}) {
    const auto found = settings.find(name);
    const std::string key = name.substr(name.find('.') + 1);
    if (found != settings.end() &&
        (key != "dns" || found->second.find_first_not_of(" ;,") != std::string::npos) &&
        parsed.find("\n" + key + "=") == std::string::npos)
      throw Refusal("NetworkManager cannot read its " + key);
  }
  // It would take the file, but could not activate it.
  const std::string start = "\npsk=";
  const std::size_t psk = parsed.find(start);
  if (psk != std::string::npos) {
    const std::size_t end = psk + start.size();
    if (!isPassword(std::string_view(parsed).substr(end, parsed.find('\n', end) - end)))
      throw Refusal("no network can have such a password");
  }
  return settings;
}

/** Replaces or, without a content, removes an installed file. */
void install(const Connection& connection, const std::optional<std::string>& content) {
  const Descriptor folder = openTrustedFolder(INSTALLED);
  if (content) {
    put(folder, connection.file, *content, {ROOT, ROOT, 0600}, Lasting::YES);
  } else {
    drop(folder, connection.file, Lasting::YES);
  }
}

/**
 * The same, and NetworkManager has taken it: otherwise the one before is put back, with its record.
 * Returns the UUID to activate; empty after a removal.
 */
std::string replace(const Connection& connection, const std::optional<std::string>& content,
                    const std::optional<std::string>& before) {
  const Descriptor folder = openTrustedFolder(RUN);
  const bool isEthernet = connection.type == ETHERNET.type;
  // Better none than one that is not true any more. Moved, it needs no room to return.
  const bool hadRecord = isEthernet && renameat(folder, RECORD, folder, RECORD_BEFORE) == 0;
  try {
    if (isEthernet) drop(folder, RECORD, Lasting::NO);  // where it could not be moved
    install(connection, content);
    if (!reload()) throw std::runtime_error("NetworkManager does not answer");
    if (!content) return {};
    std::string uuid = takenAs(connection);
    if (uuid.empty()) throw Refusal("NetworkManager does not take it");
    (void)unlinkat(folder, RECORD_BEFORE, 0);
    return uuid;
  } catch (const std::exception& error) {
    try {
      // Where it was never replaced, there may be no room to write it once more.
      if (take(openTrustedFolder(INSTALLED), connection.file, ROOT) != before)
        install(connection, before);
    } catch (const std::exception& obstacle) {
      throw std::runtime_error(std::string(connection.file) + ": " + error.what() +
                               ", and the one before cannot be put back: " + obstacle.what());
    }
    const bool isRead = reload();
    if (hadRecord) (void)renameat(folder, RECORD_BEFORE, folder, RECORD);
    const std::string reason =
        std::string(error.what()) + ", the one before is " +
        (isRead ? "back" : "installed again, but NetworkManager has not read it");
    // After a refusal nothing has changed; where it is not read, the new one may be in use.
    if (isRead && dynamic_cast<const Refusal*>(&error) != nullptr) throw Refusal(reason);
    throw std::runtime_error(std::string(connection.file) + ": " + reason);
  }
}

/** Has a locked working copy be a copy of the installed files again. */
void renewLockedCopy() try {
  if (ownerOf(openFolder(WORKING_COPY)) != ROOT) return;
  const std::string lackingFile = makeWorkingCopy(ROOT).file;
  if (!lackingFile.empty()) complain(lackingFile);
} catch (const std::exception& error) {  // the next unlock makes another one
  complain(std::string("the working copy is not a copy of what is installed: ") + error.what());
}

/** Takes a connection's file over. Returns the UUID to activate; empty after a removal. */
std::string takeOver(const Request& request, const Connection& connection) {
  const Descriptor locked = lock();
  const auto content = takeSaved(openSession(request), connection, request.user);
  const auto before = take(openTrustedFolder(INSTALLED), connection.file, ROOT);
  if (!content) {
    // The window disables Wi-Fi by removing its file. Then it has no id to tell.
    if (connection.type != WIFI.type || !request.id.empty()) throw Refusal("there is no file");
    replace(connection, std::nullopt, before);
    if (before) {
      note(std::string("removed ") + connection.file);
    } else {  // the window asks for the same where it could not make a first file
      complain(std::string("there was no ") + connection.file + " to remove");
    }
    renewLockedCopy();
    return {};
  }
  const Settings settings = check(connection, *content, before);
  // The window could not write all of it, as before the "unlock" was done, or on a full disk.
  if (connection.type == ETHERNET.type && isRecordOfOthers(request.user, settings))
    throw Refusal("the update record is of other settings");
  // The window could not remove it, nor could it read an id there.
  if (connection.type == WIFI.type && request.id.empty()) throw Refusal("no id was told");
  std::string uuid = replace(connection, content, before);
  note(std::string("installed ") + connection.file + ", id " + quoted(request.id));
  if (connection.type == ETHERNET.type) publishRecord(request.user, settings);
  renewLockedCopy();
  return uuid;
}

/** The first address that an active connection has, with its prefix; empty if none is told. */
std::string addressOf(const std::string& uuid) try {
  std::string address;
  // A newer NetworkManager knows it a moment after the activation only.
  for (int question = 0; question < 5 && address.empty(); ++question) {
    if (question > 0) usleep(200'000);
    const Outcome told =
        run({NMCLI, "-g", "IP4.ADDRESS", "connection", "show", "uuid", uuid}, "", LONGEST_QUESTION);
    if (!succeeded(told)) break;
    address = told.output.substr(0, told.output.find_first_of(" \n"));
  }
  return address;
} catch (const std::exception&) {  // it is active all the same
  return {};
}

/** Returns the address that is in use now; empty if none is known. */
std::string finalize(const Request& request, const Connection& connection) {
  std::string uuid;
  try {
    uuid = takeOver(request, connection);
  } catch (const Refusal& refusal) {
    throw Refusal(std::string(connection.file) + ": " + refusal.what());
  }
  if (uuid.empty()) return {};
  // Other requests need not wait for this. If it fails the file stays: the cable may be out.
  alarm(0);
  const Outcome outcome =
      run({NMCLI, "--wait", LONGEST_ACTIVATION, "connection", "up", "uuid", uuid}, "",
          LONGEST_REQUEST + LONGEST_QUESTION);
  // No refusal: the file is installed.
  if (!succeeded(outcome))
    throw std::runtime_error(std::string(connection.file) + " cannot be activated now");
  note(std::string("activated ") + connection.file);
  return addressOf(uuid);
}

/** The user that sudo runs us for; ROOT if it is root itself, or not sudo. */
uid_t callingUser() {
  const char* const text = std::getenv("SUDO_UID");
  if (text == nullptr) return ROOT;
  uid_t user = ROOT;
  const char* const end = text + std::strlen(text);
  const auto [last, error] = std::from_chars(text, end, user);
  if (error != std::errc() || last != end || user == static_cast<uid_t>(-1)) return ROOT;
  return user;
}

bool isWellFormed(const Words& words) {
  if (words.empty()) return false;
  if (words[0] == "unlock" || words[0] == "rollback") return words.size() == 1;
  if (words[0] == "finalize_ethernet" || words[0] == "finalize_wifi")
    return words.size() == 1 || (words.size() == 2 && words[1].size() <= LONGEST_ID);
  return false;
}

/** Does what is asked for. Returns the address that is in use then; empty if none is known. */
std::string serve(const Request& request) {
  if (geteuid() != ROOT || getuid() != ROOT) throw Refusal("only root can do this");
  if (request.user == ROOT && request.action != "rollback")
    throw Refusal("no user has asked for this");
  makeFolder(RUN, 0755);
  if (request.action == "unlock") {
    unlock(request);
  } else if (request.action == "rollback") {
    rollback(request);
  } else {
    return finalize(request, request.action == "finalize_ethernet" ? ETHERNET : WIFI);
  }
  return {};
}

/** Tells everybody how a request has ended, since its window does not wait for that. */
void publishEnding(std::string_view action, const char* result, const std::string& address) try {
  if (geteuid() != ROOT) return;
  std::array<char, sizeof("2026-11-22T08:30:00Z")> time{};
  const std::time_t seconds = std::time(nullptr);
  std::strftime(time.data(), time.size(), "%Y-%m-%dT%H:%M:%SZ", std::gmtime(&seconds));
  const std::string text = "request=" + std::string(action) + "\ntime=" + time.data() +
                           "\nresult=" + result + "\n" + complaintsAfter("why=") +
                           (address.empty() ? "" : "address=" + address + "\n");
  makeFolder(RUN, 0755);
  makeFolder(ENDINGS, 0755);
  // Not the lock of the requests: others may be at work when this one has ended.
  const Descriptor file = openForLocks(ENDINGS_LOCK);
  if (flock(file, LOCK_EX) != 0) throw Refusal("no lock can be had");
  put(openTrustedFolder(ENDINGS), std::string(action), text, {ROOT, ROOT, 0644}, Lasting::NO);
} catch (const std::exception& error) {  // it has ended as it has
  complain(std::string("the outcome is not told: ") + error.what());
}

/**
 * Takes one of a user's places, which goes with the descriptor: the service manager has only so
 * many for all, and a user who says nothing must not keep the others out.
 */
Descriptor takePlace(uid_t user) {
  makeFolder(RUN, 0755);
  Descriptor file = openForLocks(PLACES);
  for (off_t place = 0; place < MOST_AT_ONCE; ++place) {
    struct flock byte {
      F_WRLCK, SEEK_SET, user *MOST_AT_ONCE + place, 1, 0
    };
    if (fcntl(file, F_SETLK, &byte) == 0) return file;
  }
  throw Refusal("too many requests of this user");
}

/** The words that are sent on a connection, each with a NUL behind it; none if one has none. */
Words wordsFrom(int connection) {
  alarm(LONGEST_SILENCE);
  const std::string text = readAtMost(connection, LONGEST_CALL);
  Words words;
  for (std::size_t start = 0; start < text.size(); start += words.back().size() + 1)
    words.emplace_back(text.c_str() + start);
  if (!text.empty() && text.back() != '\0') words.clear();
  return words;
}

ExitStatus answer(const Words& words, const Caller& caller) {
  if (!isWellFormed(words)) {
    complain("usage: unlock | rollback | finalize_ethernet [ID] | finalize_wifi [ID]");
    return WRONG_CALL;
  }
  ExitStatus status = DONE;
  const char* result = "done";
  std::string address;
  try {
    address = serve({caller, words[0], words.size() > 1 ? words[1] : ""});
  } catch (const std::exception& error) {
    complain(words[0] + ": " + error.what());
    result = dynamic_cast<const Refusal*>(&error) != nullptr ? "refused" : "failed";
    status = NOT_DONE;
  }
  alarm(LONGEST_REQUEST);
  publishEnding(words[0], result, address);
  // The start of the system does not wait for what users have left.
  if (caller.user != ROOT) removeOldCopies();
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  const uid_t user = callingUser();
  // Whoever calls sudo chooses the connection, and could take one that has another user at its end.
  const bool isService = argc < 2 && std::getenv("SUDO_UID") == nullptr;
  std::optional<Caller> peer;
  std::optional<Descriptor> place;  // to the end: the log may have to wait for its reader
  ExitStatus status = NOT_DONE;
  try {
    forgetCaller();
    openlog("zor-network-permissions-handler", LOG_PID, LOG_AUTHPRIV);
    if (isService) peer = callerOf(STDIN_FILENO);
    if (peer) {
      place.emplace(takePlace(peer->user));
      status = answer(wordsFrom(STDIN_FILENO), *peer);
    } else {
      status = answer(Words(argv + std::min(argc, 1), argv + argc), {user, calledAt()});
    }
  } catch (const std::exception& error) {
    complain(error.what());
  }
  // The answer does not wait for a reader; a pipe may wait for ever, and the log would miss it.
  if (peer) {
    const std::string text = std::to_string(status) + complaintsAfter(SPEAKER);
    (void)send(STDIN_FILENO, text.data(), text.size(), MSG_DONTWAIT);
    (void)shutdown(STDIN_FILENO, SHUT_RDWR);  // who is answered does not wait for the log
  }
  if (!peer || place) writeLog();  // who has no place would be one too many there
  if (!peer) std::fputs(complaintsAfter(SPEAKER).c_str(), stderr);
  return status;
}
