// A client of the library, as a program and as a plugin of it: each is compiled
// from client.cpp, with options of its own.

#ifndef VOK_TESTS_LIBRARY_BINARY_IDENTITY_CLIENT_H_
#define VOK_TESTS_LIBRARY_BINARY_IDENTITY_CLIENT_H_

// What a client sees, for each type of message, in the order of declaration.
struct ClientView {
  const void* default_instance;
  const void* descriptor;
};

// Checks what the client named so sees: prints what isn't as it is to be, and
// returns null then. The array ends in nulls.
extern "C" const ClientView* clientView(const char* client);

#endif  // VOK_TESTS_LIBRARY_BINARY_IDENTITY_CLIENT_H_
