// Line and text helpers shared by the element-set, modes and places readers.
#pragma once

#include <cstdio>

namespace veloran {

// Size of the line buffer of the element-set and places readers.
constexpr int kLineBufferSize = 1024;

// Reads one line into buf (size bytes): characters up to and including the
// first line feed or carriage return, which stays as the line's last
// character, then a terminating NUL. Returns buf, or null when the file ends
// before a line end or when size - 1 characters pass without one; the
// characters read are then lost. A carriage return plus line feed is two
// lines: the line feed is read as a line of its own.
char* my_fgets(char* buf, int size, FILE* file);

// Reads as many characters as keyword has (fewer when a line end comes
// first) and tells whether the keyword occurs in them: in effect, whether the
// line at the current position begins with the keyword. The characters read
// are consumed either way. Returns 1 or 0.
int MatchFileStr(FILE* file, const char* keyword);

// Cuts the text at its first carriage return or line feed, turns the tabs
// before that point into blanks and removes leading and trailing blanks, in
// place. Returns the new length. Null gives 0.
int CleanUpLocationStr(char* text);

// 1 when the text holds at least one letter or digit of the current locale,
// else 0 (blanks, punctuation and signs count as blank). Null gives 0.
int nonBlank(const char* text);

}  // namespace veloran
