// SPDX-License-Identifier: Apache-2.0

// Accepts the connections of a gRPC server. gRPC's own listener never accepts again
// after the process had no descriptor left, takes the path of a running server, and
// removes that of its successor.

#ifndef VOK_APPS_GRPC_LISTENER_H_
#define VOK_APPS_GRPC_LISTENER_H_

#include <grpcpp/grpcpp.h>
#include <poll.h>
#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "common/descriptor.h"
#include "grpc/security.h"

namespace rule_grpc {

using apps::Descriptor;

// Lets the process have as many descriptors as it may. Throws std::runtime_error if
// that is too few for a server.
void raiseDescriptorLimit();

// A connection gets to gRPC with its first byte. One that sends nothing is closed after
// kLongestSilence, or as soon as another one needs its descriptor. If there are
// kMostConnections that have sent something, or no descriptor is left, more wait until
// one of them ends.
class Listener {
 public:
  using Acceptor = grpc::experimental::ExternalConnectionAcceptor;
  static constexpr int kMostConnections = 1000;
  static constexpr auto kLongestSilence = std::chrono::seconds(10);

  // Listens. Throws std::runtime_error if that is impossible, or if another process
  // answers at the address or has a file there that is not a socket.
  explicit Listener(const std::string& text);
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener();

  // With the port that the system chose for 0.
  const std::string& address() const { return address_; }

  // Hands connections to the acceptor, whose server has started, until stop(). Closes all of them
  // while the process has more than mostBytes in memory.
  void start(std::unique_ptr<Acceptor> acceptor, std::size_t mostBytes);
  // Closes the sockets, and removes the one of unix: unless it is another's by now.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;

  struct Silent {
    Descriptor connection;
    Clock::time_point end;
  };

  void listenOnPort(const Address& address);
  void listenOnPath(const std::string& path);
  void removePath() const;
  void acceptUntilStopped();
  std::vector<pollfd> watched(bool accepting) const;
  void handOver(const pollfd* silent);
  void acceptOne(int socket);
  bool descriptorIsFree() const;
  void limitMemory(std::size_t mostBytes) const;

  std::string address_;
  std::string path_;
  dev_t device_ = 0;
  ino_t inode_ = 0;
  std::vector<Descriptor> sockets_;
  // Readable once the thread is to end.
  Descriptor stopped_;
  int first_ = 0;
  int firstRefused_ = 0;
  // The oldest is the first.
  std::deque<Silent> silent_;
  std::unique_ptr<Acceptor> acceptor_;
  std::thread thread_;
  std::thread guard_;
};

}  // namespace rule_grpc

#endif  // VOK_APPS_GRPC_LISTENER_H_
