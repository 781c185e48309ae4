// SPDX-License-Identifier: Apache-2.0

// What a plugin of the tests offers its host, under the name "plugin".

#ifndef VOK_TESTS_LIBRARY_LIFETIME_PLUGIN_H_
#define VOK_TESTS_LIBRARY_LIFETIME_PLUGIN_H_

struct Plugin {
  bool (*use)();                 // uses everything; false if something is wrong
  void* (*make)();               // a new message
  bool (*change)(void*);         // whether it is what make() makes; changes it
  bool (*changed)(const void*);  // whether it is what change() made of it
  void (*destroy)(void*);
};

#endif  // VOK_TESTS_LIBRARY_LIFETIME_PLUGIN_H_
