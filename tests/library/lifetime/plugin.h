// SPDX-License-Identifier: Apache-2.0

// What a plugin of the tests offers its host, under the name "plugin".

#ifndef VOK_TESTS_LIBRARY_LIFETIME_PLUGIN_H_
#define VOK_TESTS_LIBRARY_LIFETIME_PLUGIN_H_

struct Plugin {
  void (*use)();           // uses everything
  void* (*make)();         // a new message
  void (*change)(void*);   // changes what make() of another plugin returned
  void (*destroy)(void*);  // deletes it, and checks that it was changed
};

#endif  // VOK_TESTS_LIBRARY_LIFETIME_PLUGIN_H_
