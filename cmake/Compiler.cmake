# How every target of the project is compiled.

add_library(velsock_compiler INTERFACE)
if(MSVC)
  # Written from the compiler's documentation; not tried with the compiler.
  target_compile_options(velsock_compiler INTERFACE /permissive- /utf-8 /EHsc /Zc:__cplusplus /Zc:preprocessor)
endif()

if(NOT VELSOCK_WARNINGS)
  # The flags of another project may ask for warnings and make errors of them, and a newer compiler may know more.
  target_compile_options(velsock_compiler INTERFACE $<IF:$<CXX_COMPILER_ID:MSVC>,/w,-w>)
  target_link_options(velsock_compiler INTERFACE $<$<NOT:$<CXX_COMPILER_ID:MSVC>>:-w>)
elseif(MSVC)
  target_compile_options(velsock_compiler INTERFACE /W4 /WX)
else()
  target_compile_options(velsock_compiler INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wcast-align -Wcast-qual
    -Wformat=2 -Wold-style-cast -Woverloaded-virtual -Wundef -Wunused
    -Wdouble-promotion -Wextra-semi -Werror
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-branches;-Wduplicated-cond;-Wlogical-op;-Wuseless-cast>)
endif()

set(sanitizers "")
if(VELSOCK_SANITIZE)
  set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all)
elseif(VELSOCK_SANITIZE_THREADS)
  set(sanitizers -fsanitize=thread)
  # With it, g++ 12 takes joined strings for overruns.
  add_compile_options("$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow>")
endif()
if(sanitizers)
  add_compile_options(${sanitizers} -fno-omit-frame-pointer)
  add_link_options(${sanitizers})
endif()

if(VELSOCK_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# velsock_precompile(TARGET): most of what a small source takes to compile goes into these headers. Where they are not
# precompiled, as in what is shipped, a source must include them itself.
function(velsock_precompile target)
  if(VELSOCK_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <charconv> <chrono> <memory> <mutex> <optional> <span> <string> <string_view> <vector>)
  endif()
endfunction()
