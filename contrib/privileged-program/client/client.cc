// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

// What the window finds on PATH: it hands its arguments to the service, and the answer on. It has
// no privileges, and is believed nothing but these words.

namespace {

constexpr sockaddr_un SERVICE = {AF_UNIX, "/run/zor-network.socket"};
constexpr timeval LONGEST_WAIT_FOR_ITS_TURN = {10, 0};
// Microseconds before it is asked again; each pause is twice the one before, and the first none.
constexpr useconds_t SHORTEST_PAUSE = 50'000;
constexpr useconds_t LONGEST_PAUSE = 3'200'000;

/** A connection to the service; -1 with errno if there is none. */
int connectToService() {
  const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (connection < 0) return -1;
  (void)setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &LONGEST_WAIT_FOR_ITS_TURN,
                   sizeof(LONGEST_WAIT_FOR_ITS_TURN));
  const void* const address = &SERVICE;
  const int result = connect(connection, static_cast<const sockaddr*>(address), sizeof(SERVICE));
  return result == 0 ? connection : -1;
}

/** Sends the words of a request, each with a NUL behind it. Returns whether all of it was taken. */
bool ask(int connection, int count, char** words) {
  std::string request;
  for (int index = 0; index < count; ++index) request.append(words[index]) += '\0';
  const bool isSent = send(connection, request.data(), request.size(), MSG_NOSIGNAL) >= 0;
  return shutdown(connection, SHUT_WR) == 0 && isSent;
}

/**
 * Reads an answer to its end: a digit, the exit status, and what is to be said. Returns whether the
 * request was read; it was not where the service manager had too many others.
 */
bool hear(int connection, std::string& answer) {
  std::array<char, 4096> piece{};
  ssize_t length = 0;
  while ((length = recv(connection, piece.data(), piece.size(), 0)) > 0)
    answer.append(piece.data(), static_cast<std::size_t>(length));
  return length == 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string answer;
  bool isRead = false;
  for (useconds_t pause = SHORTEST_PAUSE; !isRead && answer.empty() && pause <= LONGEST_PAUSE;
       pause *= 2) {
    if (pause > SHORTEST_PAUSE) usleep(pause);
    const int connection = connectToService();
    if (connection < 0) {
      std::perror("zor-network-permissions-handler: /run/zor-network.socket");
      return 1;
    }
    const bool isTaken = ask(connection, argc - 1, argv + 1);
    isRead = hear(connection, answer) && isTaken;
    close(connection);  // it may have the number of a stream that was closed
  }
  if (answer.empty()) {
    std::fputs("zor-network-permissions-handler: the service gave no answer\n", stderr);
    return 1;
  }
  std::fwrite(answer.data() + 1, 1, answer.size() - 1, stderr);
  return answer.front() - '0';
}
