// The entry points of the test modules, each built with its own copy of the
// frame. Texts cross between modules as bare text pointers that hold one
// reference, the way a Chaine is one word.
#pragma once

extern "C" {
// A new value of `text`, holding one reference.
using MakeTextFn = const char* (*)(const char* text);
// An empty value, holding one reference.
using MakeEmptyFn = const char* (*)();
// Gives back the reference of a value made in any module.
using FreeTextFn = void (*)(const char* text);
// The object of the singleton "Test.Shared", made by the first module to ask.
using SharedObjectFn = int* (*)();
// The block storage that this module's copy finds.
using StorageFn = void* (*)();
}
