#!/usr/bin/env bash
# Each rule passes a small project that keeps to it, and fails the same project with a fault planted.
# shellcheck disable=SC2016  # the scripts that are planted must not be expanded here
set -euo pipefail

rules=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
project=$(mktemp -d)
trap 'rm -rf "$project"' EXIT
faults=0

fail() {
  echo "$1" >&2
  exit 1
}

# A project that keeps to every rule.
make_project() {
  rm -rf "${project:?}"/*
  mkdir -p "$project"/{tools/cat,examples,tests/unit/posix,bench,Common/support/{VelBase,VelLog},Common/support/include/VelBase} \
    "$project"/Common/text "$project"/Common/platform/posix/{errors,names} "$project"/companion/include/VelCompanion \
    "$project"/logging/posix
  put Common/support/include/VelBase/Text.h '#pragma once' '' 'int Length(const char* text);'
  put Common/support/VelBase/Text.cpp '#include "VelBase/Text.h"' '' '#include <cstring>' '' \
    '// Required (Texts.EmptyIsNone,' '// Texts.NullIsNone): null has no length.' \
    'int Length(const char* text) {' '    return static_cast<int>(std::strlen(text));' '}'
  put tests/unit/TextTests.cpp 'TEST(Texts, NullIsNone) {}' 'TEST_F(Texts,' '       EmptyIsNone) {}'
  put Common/platform/posix/errors/Errors.h '#pragma once'
  put Common/platform/posix/names/Names.cpp '#include <errors/Errors.h>'
  put run '#!/usr/bin/env bash' 'echo "$1"'
  chmod +x "$project/run"
  mkdir -p "$project"/{docs,tests/guides,Common/Socket/include/VelNet}
  put README.md '# A project' '```cpp' 'int main() {}' '```'
  put examples/Cat.cpp '#include <string>' 'int main() {' '}'
  put Common/Socket/include/VelNet/SocketError.h 'enum SOCKET_ERR : int {' '    SOCKET_ERR_INTR = 10004,' '};'
  put companion/include/VelCompanion/ErrorCatalogue.h '    {SOCKET_ERR_INTR, "SOCKET_ERR_INTR",  "Interrupted"},'
  put docs/errors.md '| 10004 | `SOCKET_ERR_INTR` | Interrupted | A signal. | |'
  put tests/unit/CatTests.cpp 'TEST(Cat, Purrs) {}' 'TEST_F(' '    CatThatSleeps, Purrs) {}'
  put SECURITY.md '# Security' '- Report it.' '## What it promises' '- A null text is none (`Texts.NullIsNone`,' \
    '  `Cat.ATailWags`).' '- There is no test for cats.'
  put tests/unit/CatTests.sh '# shellcheck shell=bash' 'TestATailWags() { true; }'
  put tests/unit/posix/CatTailTests.cpp 'TEST_P(CatTail, Wags) {}'
}

# put FILE LINE...
put() { printf '%s\n' "${@:2}" >"$project/$1"; }

# lines COUNT LINE
lines() { for ((count = 0; count < $1; count++)); do echo "$2"; done; }

check() { echo VelBase/Text.h | "$rules/$1" "$project" 2>&1; }

expect_pass() {
  local said
  said=$(check "$1") || fail "$1 does not pass a project without fault: $said"
}

# expect_fault RULE MESSAGE: the project as it is fails, for that reason; then it is made again.
expect_fault() {
  local said
  if said=$(check "$1"); then fail "$1 does not notice: $2"; fi
  [[ $said == *"$2"* ]] || fail "$1 fails, but for another reason than '$2': $said"
  faults=$((faults + 1))
  make_project
}

make_project
for rule in CheckErrors.sh CheckFloors.sh CheckGuides.sh CheckIncludes.sh CheckSizes.sh CheckScripts.sh CheckMarkdown.sh \
  CheckRequired.sh CheckSecurity.sh CheckSpelling.sh CheckTestNames.sh; do
  expect_pass "$rule"
done

put Common/platform/posix/errors/Errors.h '#include <names/Names.h>'
expect_fault CheckFloors.sh 'errors/Errors.h must not include names/Names.h'
put Common/support/VelBase/Text.cpp '#include <VelLog/Router.h>'
expect_fault CheckFloors.sh 'VelBase/Text.cpp must not include VelLog/Router.h'
put Common/support/VelBase/Text.cpp '#include <sys/socket.h>'
expect_fault CheckFloors.sh 'VelBase/Text.cpp must not include sys/socket.h'
put Common/text/Utf8.cpp '#include <Platform/System.h>'
expect_fault CheckFloors.sh 'Common/text/Utf8.cpp must not include Platform/System.h'
put Common/text/Utf8.cpp '#include <VelBase/Text.h>'
expect_fault CheckFloors.sh 'Common/text/Utf8.cpp must not include VelBase/Text.h'
put Common/support/include/VelBase/Text.h '#include "VelBase/WideText.h"'
expect_fault CheckFloors.sh 'VelBase/Text.h is public and must not include VelBase/WideText.h'
put companion/include/VelCompanion/Errors.h '#include <VelBase/Text.h>'
put tools/cat/main.cpp '#include <VelCompanion/Errors.h>'
expect_pass CheckFloors.sh
put companion/include/VelCompanion/Errors.h '#include <VelBase/WideText.h>'
expect_fault CheckFloors.sh 'VelCompanion/Errors.h must not include VelBase/WideText.h'
put companion/include/VelCompanion/Errors.h '#include <sys/socket.h>'
expect_fault CheckFloors.sh 'VelCompanion/Errors.h must not include sys/socket.h'
put companion/include/VelCompanion/Errors.h "$(lines 221 '// A comment.')"
expect_fault CheckSizes.sh 'VelCompanion/Errors.h: a file of 221 lines; 220 are allowed'
put Common/support/VelBase/Text.cpp '#include <VelCompanion/Errors.h>'
expect_fault CheckFloors.sh 'VelBase/Text.cpp must not include VelCompanion/Errors.h'
put tools/cat/main.cpp '#include <VelBase/WideText.h>'
expect_fault CheckFloors.sh 'tools/cat/main.cpp must not include VelBase/WideText.h'
put logging/Sinks.cpp '#include <VelBase/Text.h>' '#include "System.h"'
put logging/System.h '#pragma once'
put logging/posix/System.cpp '#include "System.h"' '#include <sys/socket.h>'
expect_pass CheckFloors.sh
put logging/Sinks.cpp '#include <VelBase/WideText.h>'
expect_fault CheckFloors.sh 'logging/Sinks.cpp must not include VelBase/WideText.h'
put logging/Sinks.cpp '#include <sys/socket.h>'
expect_fault CheckFloors.sh 'logging/Sinks.cpp must not include sys/socket.h'
put tests/unit/TextTests.cpp '#include <latch>'
expect_fault CheckFloors.sh 'tests/unit/TextTests.cpp must not include latch'
put tests/unit/posix/CatTailTests.cpp '#include <latch>'
expect_pass CheckFloors.sh
put tools/cat/main.cpp '#ifdef _WIN32'
expect_fault CheckFloors.sh 'tools/cat/main.cpp must not hold a conditional'
put examples/Client.cpp '#define PORT 4000'
expect_fault CheckFloors.sh 'examples/Client.cpp must not hold a macro'
put Common/support/VelLog/Line.cpp '[[gnu::noinline]] void Write();'
expect_fault CheckFloors.sh 'VelLog/Line.cpp must not hold a compiler extension'

put Common/support/VelBase/Text.cpp '#include <cstring>' '#include "VelBase/Text.h"'
expect_fault CheckIncludes.sh 'VelBase/Text.cpp must include its own header first'
put Common/support/VelBase/Text.cpp '#include <VelBase/Text.h>'
expect_fault CheckIncludes.sh 'VelBase/Text.cpp must include its own header first'
put tools/cat/Cat.h '#pragma once'
put tools/cat/Cat.cpp '// Includes nothing.'
expect_fault CheckIncludes.sh 'tools/cat/Cat.cpp must include its own header first'

put tools/cat/main.cpp "$(lines 321 '//')"
expect_fault CheckSizes.sh 'tools/cat/main.cpp: a file of 321 lines; 320 are allowed'
put tools/cat/Cat.h "$(lines 221 '//')"
expect_fault CheckSizes.sh 'tools/cat/Cat.h: a file of 221 lines; 220 are allowed'
put tests/unit/Tests.cpp "$(lines 401 '//')"
expect_fault CheckSizes.sh 'tests/unit/Tests.cpp: a file of 401 lines; 400 are allowed'
put tools/cat/main.cpp 'namespace {' 'struct Cat {' '    void Purr() const noexcept {' "$(lines 39 'f();')" '    }' '};' '}'
expect_fault CheckSizes.sh 'tools/cat/main.cpp:3: a function of 41 lines; 40 are allowed'
put tools/cat/main.cpp 'Cat::Cat(int age)' '    : age_{age}, names_({"{"}) {' "$(lines 38 '{}')" '}'
expect_fault CheckSizes.sh 'tools/cat/main.cpp:1: a function of 41 lines; 40 are allowed'
put tests/unit/Tests.cpp 'TEST(Cat, Purrs) {' "$(lines 49 'f();')" '}'
expect_fault CheckSizes.sh 'tests/unit/Tests.cpp:1: a function of 51 lines; 50 are allowed'
put tools/cat/Help.cpp 'const char* Help() {' 'return R"(' "$(lines 90 '}')" ')";' '}'
expect_pass CheckSizes.sh

put tests/unit/TextTests.cpp 'TEST(Texts, NullIsNone) {}' 'TEST_F(Texts, DISABLED_EmptyIsNone) {}'
expect_fault CheckRequired.sh 'VelBase/Text.cpp: there is no test Texts.EmptyIsNone'
put Common/support/VelBase/Text.cpp '// Required: null has no length.'
expect_fault CheckRequired.sh 'VelBase/Text.cpp: "Required:" names no test'
put Common/support/VelBase/Text.cpp 'int zero;  // Required (): null has no length.'
expect_fault CheckRequired.sh 'VelBase/Text.cpp: "Required:" names no test'
mkdir -p "$project/Common/Socket/include/VelNet"
put Common/Socket/include/VelNet/Text.h '// Required: null has no length.'
expect_fault CheckRequired.sh 'VelNet/Text.h: holds 1 marks of what is required'
put Common/support/VelBase/Text.cpp '// Nothing.'
expect_fault CheckRequired.sh 'no marks of what is required were found'

put run '#!/usr/bin/env bash' 'rm $1'
expect_fault CheckScripts.sh 'SC2086'
put tests/unit/Scene.sh '# shellcheck shell=bash' 'cd "$1"'
expect_fault CheckScripts.sh 'SC2164'

put README.md "$(lines 25 'words' | xargs)"
expect_fault CheckMarkdown.sh 'README.md:1: longer than 120 characters'
put README.md 'words '
expect_fault CheckMarkdown.sh 'README.md:1: a space at the end'
put README.md "| $(lines 25 'words' | xargs) |"
expect_pass CheckMarkdown.sh
put README.md 'See [the page](docs/page.md#top).'
expect_fault CheckMarkdown.sh 'README.md links docs/page.md, which does not exist'
put README.md 'See `VelBase/Gone.cpp`.'
expect_fault CheckMarkdown.sh 'README.md names VelBase/Gone.cpp, which does not exist'
put README.md 'See [itself](README.md#top), [the net](https://example.org) and `VelBase/Text.cpp`.'
expect_pass CheckMarkdown.sh

put tests/unit/Cat.h 'TEST(Cat, Purrs) {}'
expect_fault CheckTestNames.sh 'tests/unit/Cat.h: has tests, so its name must end in Tests.cpp'
put tests/unit/CatTests.cpp 'TEST(Cat, Purrs) {}' 'TEST_F(' '    SleepingCat, Purrs) {}'
expect_fault CheckTestNames.sh 'tests/unit/CatTests.cpp: the suite SleepingCat must begin with Cat'
put tests/unit/CatTests.cpp 'TEST(CatTail, Wags) {}'
expect_fault CheckTestNames.sh 'tests/unit/CatTests.cpp: the suite CatTail belongs to CatTailTests.cpp by its name'
put tests/unit/CatTests.cpp '// Nothing.'
expect_fault CheckTestNames.sh 'tests/unit/CatTests.cpp: has no tests, though it is named for them'

put SECURITY.md '# Security' '## What it promises' '- A null text is none' '  (`Texts.NullIsOne`).'
expect_fault CheckSecurity.sh 'SECURITY.md: there is no test Texts.NullIsOne'
put SECURITY.md '# Security' '## What it promises' '- A null text is none.'
expect_fault CheckSecurity.sh 'SECURITY.md names no test: - A null text is none.'
put SECURITY.md '# Security' '## What it promises' 'Nothing.'
expect_fault CheckSecurity.sh 'SECURITY.md has no statements'

put README.md 'Initialising takes a moment.'
expect_fault CheckSpelling.sh 'README.md:1:Initialising takes a moment.'
put bench/Load.cpp '// The time-out.'
expect_fault CheckSpelling.sh 'bench/Load.cpp:1:// The time-out.'
put bench/Load.cpp 'int code = SOCKET_ERR_NOTINITIALISED;'
expect_pass CheckSpelling.sh

put docs/errors.md '| 10004 | `SOCKET_ERR_INTR` | Interrupted | | |'
expect_fault CheckErrors.sh 'docs/errors.md does not have the errors of'
put docs/errors.md '| 10005 | `SOCKET_ERR_INTR` | Interrupted | A signal. | |'
expect_fault CheckErrors.sh 'docs/errors.md does not have the errors of'
put Common/Socket/include/VelNet/SocketError.h ''
expect_fault CheckErrors.sh 'no errors were found'

put docs/page.md 'Look:' '```cpp' 'int main() { return 1; }' '```'
expect_fault CheckGuides.sh 'docs/page.md:2: no source that is compiled has this block as it stands'
put README.md '# A project'
expect_fault CheckGuides.sh 'no blocks were found'
put tests/guides/PageTests.cpp 'TEST(Page, Runs) {' '    Text text;' '    Run();' '}'
put docs/page.md 'Look:' '```cpp' 'Text text;' '' 'Run();' '```'
expect_pass CheckGuides.sh
put docs/page.md 'Look:' '```cpp' '#include <string>' '' 'Run();' '```'
expect_fault CheckGuides.sh 'docs/page.md:2: no source'

echo "$faults planted faults are noticed"
