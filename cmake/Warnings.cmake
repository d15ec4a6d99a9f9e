# The warnings that every target of the project is built with; each is an error. Code with sanitizers in it makes gcc warn of
# what cannot happen, and the other presets compile the same lines.
add_library(ProjectWarnings INTERFACE)
if(NOT VANTREL_SANITIZERS)
  target_compile_options(ProjectWarnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2
    -Wimplicit-fallthrough -Werror)
endif()
