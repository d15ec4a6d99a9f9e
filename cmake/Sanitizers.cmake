# VANTREL_SANITIZERS names the sanitizers of the asan and tsan presets; empty in the others.
set(VANTREL_SANITIZERS "" CACHE STRING "sanitizers to build with, as -fsanitize takes them")
if(VANTREL_SANITIZERS)
  # -fPIC for programs too: one set of precompiled headers serves them and the libraries, which have it.
  add_compile_options(-fsanitize=${VANTREL_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all -fPIC)
  add_link_options(-fsanitize=${VANTREL_SANITIZERS})
endif()
