#!/usr/bin/env bash
# What makes the reference of the headers turns their comments, and the pages' links, into Doxygen's.
# usage: ReferenceFilterTests.sh PROJECT_FOLDER
set -euo pipefail

filters=$1/docs/reference
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# expect FILTER NAME: what the filter makes of the file.
expect() {
  awk -f "$filters/$1" "$2" | sed 's/ *$//' | cat -s >seen
  cat -s >expected
  diff expected seen || {
    echo "$1 does not make of $2 what it should"
    exit 1
  }
}

cat >Text.h <<'HEADER'
// A text.
#pragma once

#include <string>

// A room for <text>, with 100% of C:\Text:
//   Text text;
class Text {
public:
    // Copies. Also
    // - what is below
    //   and more.
    Text();
    Text(const Text& other);

    // Finds.
    //
    // Required: nothing is found at first.
    //
    // Throws: SOCKET_ERR_INVAL,
    //         SOCKET_ERR_INTR   it is none,
    //                           or none any more
    //         what Add throws
    int Find(int character) const {
        if (character == 0) {
            return 0;  // none
        }
        // Not described.
        return 1;
    }

    int length;  // in units
};

// General.

enum Kind : int {
    SHORT = 0,  // a word
};

template <>
struct std::hash<Text> {
    int operator()(const Text& text) const { return text.length; }
};
HEADER
expect headers.awk Text.h <<'HEADER'
/// @file
/// A text.
#pragma once

#include <string>

/// A room for \<text\>, with 100\% of C:\\Text:
/// @code{.cpp}
///   Text text;
/// @endcode
class Text {
public:
/// Copies. Also
/// - what is below
///   and more.
    Text();
/// Copies. Also
/// - what is below
///   and more.
    Text(const Text& other);

/// Finds.
///
///
/// @remark **Required:** nothing is found at first.
///
///
/// @par Throws
///
/// - SOCKET_ERR_INVAL, SOCKET_ERR_INTR: it is none, or none any more
/// - what Add throws
///
    int Find(int character) const {
        if (character == 0) {
            return 0;  // none
        }
        // Not described.
        return 1;
    }

    int length;  ///< in units
};

/// @file
/// General.

enum Kind : int {
    SHORT = 0,  ///< a word
};

/// @cond
template <>
struct std::hash<Text> {
    int operator()(const Text& text) const { return text.length; }
};
/// @endcond
HEADER

cat >page.md <<'PAGE'
# A page

## What is `it`?

See [this](#what-is-it), [that](other.md#some-thing), [all of it](other.md), [a source](../examples/Cat.cpp),
[the net](https://example.org) and ![a picture](page.svg).

```
[not](a.md)
```
PAGE
expect pages.awk page.md <<'PAGE'
# A page {#page}

## What is it? {#page_what-is-it}

See @ref page_what-is-it "this", @ref other_some-thing "that", @ref other "all of it", a source,
[the net](https://example.org) and ![a picture](page.svg).

```
[not](a.md)
```
PAGE
echo "headers and pages are turned into what the reference is made of"
