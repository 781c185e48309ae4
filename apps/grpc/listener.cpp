// SPDX-License-Identifier: Apache-2.0

#include "grpc/listener.h"

#include <fcntl.h>
#include <malloc.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace rule_grpc {
namespace {

// Not for connections: what the process opens to answer requests.
constexpr int kSpareDescriptors = 24;
constexpr int kFewestDescriptors = 48;
constexpr auto kPause = std::chrono::milliseconds(20);

int descriptorLimit() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  constexpr rlim_t kPlenty = 1U << 20U;
  return static_cast<int>(std::min(limit.rlim_cur, kPlenty));
}

[[noreturn]] void fail(const std::string& address, const std::string& reason) {
  throw std::runtime_error(address + ": cannot listen there: " + reason);
}

std::string reasonOf(int error) {
  return std::generic_category().message(error);
}

using Infos = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

Infos resolve(const Address& address, const std::string& text) {
  addrinfo hints{};
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(address.host.c_str(), address.port.c_str(), &hints, &found);
  if (error != 0) {
    fail(text, gai_strerror(error));
  }
  return {found, &freeaddrinfo};
}

// Where IPv6 has it, too.
in_port_t& portOf(sockaddr* address) {
  return reinterpret_cast<sockaddr_in*>(address)->sin_port;
}

in_port_t boundPort(int socket) {
  sockaddr_storage bound{};
  socklen_t size = sizeof bound;
  getsockname(socket, reinterpret_cast<sockaddr*>(&bound), &size);
  return portOf(reinterpret_cast<sockaddr*>(&bound));
}

Descriptor streamSocket(int family) {
  return Descriptor(socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

bool listensAt(const Descriptor& socket, const sockaddr* address, socklen_t size) {
  return bind(socket.number(), address, size) == 0 && listen(socket.number(), SOMAXCONN) == 0;
}

// Accepted sockets inherit the options.
Descriptor listening(const addrinfo& info) {
  const int on = 1;
  Descriptor socket = streamSocket(info.ai_family);
  setsockopt(socket.number(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  setsockopt(socket.number(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  return listensAt(socket, info.ai_addr, info.ai_addrlen) ? std::move(socket) : Descriptor();
}

sockaddr_un socketAt(const std::string& path, const std::string& text) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    fail(text, "the path is too long");
  }
  path.copy(address.sun_path, path.size());
  return address;
}

// Whether a process listens at the path, or may do so.
bool isTaken(const sockaddr_un& address) {
  const Descriptor probe = streamSocket(AF_UNIX);
  return connect(probe.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
             0 ||
         errno != ECONNREFUSED;
}

// While it lives, no other server puts a socket into the path's folder or removes one.
Descriptor lockFolderOf(const std::string& path, const std::string& text) {
  constexpr auto kLongest = std::chrono::seconds(5);
  const std::string folder = std::filesystem::path(path).parent_path().string();
  Descriptor lock(open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (lock.number() < 0) {
    fail(text, reasonOf(errno));
  }
  const auto end = std::chrono::steady_clock::now() + kLongest;
  while (flock(lock.number(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() > end) {
      fail(text, "the folder cannot be locked: " + reasonOf(errno));
    }
    std::this_thread::sleep_for(kPause);
  }
  return lock;
}

// Reading the first figure is fast, but it has what malloc keeps after it is freed.
bool usesMoreThan(std::size_t bytes) {
  std::size_t size = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  if (resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) <= bytes) {
    return false;
  }
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd > bytes;
}

// gRPC owns the connections and has no function that closes one. It would still read what has
// arrived before.
void endConnection(int socket) {
  sockaddr_storage peer{};
  socklen_t size = sizeof peer;
  if (getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &size) != 0) {
    return;
  }
  shutdown(socket, SHUT_RDWR);
  std::array<char, 65536> ignored;
  while (recv(socket, ignored.data(), ignored.size(), MSG_DONTWAIT) > 0) {
  }
}

}  // namespace

void raiseDescriptorLimit() {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
  // Those that were open at the start, but for the three usual ones, are not the server's.
  const Descriptor next(eventfd(0, EFD_CLOEXEC));
  const int left = next.number() < 0 ? 0 : descriptorLimit() - std::max(next.number() - 3, 0);
  if (left < kFewestDescriptors) {
    throw std::runtime_error("needs " + std::to_string(kFewestDescriptors) +
                             " file descriptors, and may have " + std::to_string(left));
  }
}

Listener::Listener(const std::string& text)
    : address_(text), stopped_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
  const Address address = parseAddress(text);
  if (address.path.empty()) {
    listenOnPort(address);
  } else {
    listenOnPath(address.path);
  }
}

Listener::~Listener() {
  stop();
}

// A name can have several numbers, such as 127.0.0.1 and ::1, and the same one twice. All
// get the same port.
void Listener::listenOnPort(const Address& address) {
  const Infos infos = resolve(address, address_);
  in_port_t port = portOf(infos->ai_addr);
  int error = 0;
  std::set<std::string> numbers;
  for (const addrinfo* info = infos.get(); info != nullptr; info = info->ai_next) {
    if (!numbers.emplace(reinterpret_cast<const char*>(info->ai_addr), info->ai_addrlen).second) {
      continue;
    }
    portOf(info->ai_addr) = port;
    Descriptor socket = listening(*info);
    error = errno;
    if (socket.number() >= 0) {
      port = boundPort(socket.number());
      sockets_.push_back(std::move(socket));
    } else if (error == EADDRINUSE) {
      fail(address_, reasonOf(error));
    }
  }
  if (sockets_.empty()) {
    fail(address_, reasonOf(error));
  }
  address_.replace(address_.rfind(':') + 1, std::string::npos, std::to_string(ntohs(port)));
}

void Listener::listenOnPath(const std::string& path) {
  const sockaddr_un address = socketAt(path, address_);
  const Descriptor lock = lockFolderOf(path, address_);
  struct stat found {};
  if (lstat(path.c_str(), &found) == 0) {
    if (!S_ISSOCK(found.st_mode)) {
      fail(address_, "a file that is not a socket is there");
    }
    if (isTaken(address)) {
      fail(address_, reasonOf(EADDRINUSE));
    }
    unlink(path.c_str());
  }
  Descriptor socket = streamSocket(AF_UNIX);
  if (!listensAt(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) ||
      lstat(path.c_str(), &found) != 0) {
    fail(address_, reasonOf(errno));
  }
  path_ = path;
  device_ = found.st_dev;
  inode_ = found.st_ino;
  sockets_.push_back(std::move(socket));
}

void Listener::start(std::unique_ptr<Acceptor> acceptor, std::size_t mostBytes) {
  acceptor_ = std::move(acceptor);
  const Descriptor next(fcntl(stopped_.number(), F_DUPFD_CLOEXEC, 0));
  first_ = next.number();
  firstRefused_ = std::min(first_ + kMostConnections, descriptorLimit() - kSpareDescriptors);
  thread_ = std::thread([this] { acceptUntilStopped(); });
  // gRPC can keep the other thread as long as a connection sends something.
  guard_ = std::thread([this, mostBytes] { limitMemory(mostBytes); });
}

void Listener::stop() {
  if (thread_.joinable()) {
    eventfd_write(stopped_.number(), 1);
    thread_.join();
    guard_.join();
  }
  removePath();
  path_.clear();
  sockets_.clear();
  silent_.clear();
}

void Listener::removePath() const {
  if (path_.empty()) {
    return;
  }
  try {
    const Descriptor lock = lockFolderOf(path_, address_);
    struct stat found {};
    if (lstat(path_.c_str(), &found) == 0 && found.st_dev == device_ && found.st_ino == inode_) {
      unlink(path_.c_str());
    }
  } catch (const std::runtime_error&) {
    // The socket remains, and the next server replaces it.
  }
}

void Listener::acceptUntilStopped() {
  while (true) {
    const bool accepting = !silent_.empty() || descriptorIsFree();
    std::vector<pollfd> ready = watched(accepting);
    const bool waiting = !silent_.empty() || !accepting;
    poll(ready.data(), ready.size(), waiting ? static_cast<int>(kPause.count()) : -1);
    if (ready[0].revents != 0) {
      return;
    }
    handOver(ready.data() + 1 + sockets_.size());
    for (std::size_t i = 1; i <= sockets_.size(); ++i) {
      if (ready[i].revents != 0) {
        acceptOne(ready[i].fd);
      }
    }
    while (!silent_.empty() && silent_.front().end < Clock::now()) {
      silent_.pop_front();
    }
  }
}

// stopped_, sockets_ (those that poll() passes over are negative) and silent_.
std::vector<pollfd> Listener::watched(bool accepting) const {
  std::vector<pollfd> result{{stopped_.number(), POLLIN, 0}};
  for (const Descriptor& socket : sockets_) {
    result.push_back({accepting ? socket.number() : -1, POLLIN, 0});
  }
  for (const Silent& silent : silent_) {
    result.push_back({silent.connection.number(), POLLIN, 0});
  }
  return result;
}

void Listener::handOver(const pollfd* silent) {
  for (Silent& each : silent_) {
    if ((silent++)->revents != 0) {
      Acceptor::NewConnectionParameters connection;
      connection.fd = each.connection.release();
      acceptor_->HandleNewConnection(&connection);
    }
  }
  silent_.erase(std::remove_if(silent_.begin(), silent_.end(),
                               [](const Silent& each) { return each.connection.number() < 0; }),
                silent_.end());
}

void Listener::acceptOne(int socket) {
  if (!descriptorIsFree() && !silent_.empty()) {
    silent_.pop_front();
  }
  if (!descriptorIsFree()) {
    return;
  }
  Descriptor connection(accept4(socket, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (connection.number() >= 0) {
    silent_.push_back({std::move(connection), Clock::now() + kLongestSilence});
  } else if (errno != EAGAIN) {
    // The system has no descriptor left: the connection waits, and would be ready at once.
    std::this_thread::sleep_for(kPause);
  }
}

void Listener::limitMemory(std::size_t mostBytes) const {
  pollfd stopped{stopped_.number(), POLLIN, 0};
  while (poll(&stopped, 1, static_cast<int>(kPause.count())) <= 0) {
    if (usesMoreThan(mostBytes)) {
      for (int socket = first_; socket <= firstRefused_; ++socket) {
        endConnection(socket);
      }
    }
  }
}

// The system gives the lowest number that is free, which tells how many are taken.
bool Listener::descriptorIsFree() const {
  const Descriptor next(fcntl(stopped_.number(), F_DUPFD_CLOEXEC, 0));
  return next.number() >= 0 && next.number() < firstRefused_;
}

}  // namespace rule_grpc
