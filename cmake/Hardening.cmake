# Makes a hole in the program hard to use, for all targets; that the program has it is tested. Sanitizers do the same work otherwise.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(NOT VANTREL_SANITIZERS)
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong -fstack-clash-protection)
  add_link_options(-Wl,-z,relro,-z,now,-z,noexecstack)
  check_cxx_compiler_flag(-fcf-protection=full HAS_CONTROL_FLOW_PROTECTION)
  if(HAS_CONTROL_FLOW_PROTECTION)
    add_compile_options(-fcf-protection=full)
  endif()
endif()
