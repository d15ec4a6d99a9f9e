# The warnings that every target of the project is built with; each is an error.
add_library(ProjectWarnings INTERFACE)
target_compile_options(ProjectWarnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2
  -Wimplicit-fallthrough -Werror)
