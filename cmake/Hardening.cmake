# What is shipped stops a program whose memory was misused, instead of going on with it.

add_library(velsock_hardening INTERFACE)

# Programs at an address of the loader's choice: says so to the linker as well.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# velsock_harden FLAG...: those of these flags that the compiler has.
include(CheckCXXCompilerFlag)
function(velsock_harden)
  foreach(flag IN LISTS ARGN)
    string(MAKE_C_IDENTIFIER "VELSOCK_HAS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(velsock_hardening INTERFACE ${flag})
    endif()
  endforeach()
endfunction()

if(NOT VELSOCK_HARDENING OR VELSOCK_SANITIZE OR VELSOCK_SANITIZE_THREADS)
  # The sanitizers see more, and their checks and these disturb each other.
elseif(MSVC)
  target_compile_options(velsock_hardening INTERFACE /GS /guard:cf)
  target_link_options(velsock_hardening INTERFACE /DYNAMICBASE /NXCOMPAT /HIGHENTROPYVA /guard:cf)
elseif(MINGW)
  # The stack protector would need one more library at run time there, and so would the checked functions.
  target_link_options(velsock_hardening INTERFACE -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va)
else()
  velsock_harden(-fstack-protector-strong -fstack-clash-protection -fcf-protection=full)
  # The checked functions exist only with optimization.
  target_compile_options(velsock_hardening INTERFACE
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  target_link_options(velsock_hardening INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()
