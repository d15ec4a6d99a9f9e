# What targets have in builds with sanitizers beyond what they have in others; read when all targets are known.

# The headers of the toolkit are read once instead of once for each file, which takes half the time. The other builds do
# without, so that each file is known to include what it uses.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/precompiled.cpp CONTENT "// Only the headers before it count.\n")
add_library(PrecompiledHeaders OBJECT ${PROJECT_BINARY_DIR}/precompiled.cpp)
target_link_libraries(PrecompiledHeaders PRIVATE Qt6::Quick Qt6::Widgets)
target_precompile_headers(PrecompiledHeaders PRIVATE
  <QtCore> <QtGui> <QtQuick> <algorithm> <array> <chrono> <filesystem> <functional> <memory> <optional> <random> <set>
  <span> <string> <thread> <vector>)
set(read_headers_themselves # they are compiled with other macros or options
  PrecompiledHeaders FaultInjection faulty-disk OtherFormatTest decode-benchmark)

function(set_up_sanitized_targets folder)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(libraries ${target} LINK_LIBRARIES)
    if("ProjectWarnings" IN_LIST libraries AND NOT target IN_LIST read_headers_themselves) # one that we wrote
      target_link_libraries(${target} PRIVATE Qt6::Quick Qt6::Widgets) # for their macros
      target_precompile_headers(${target} REUSE_FROM PrecompiledHeaders)
    endif()
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
      target_sources(${target} PRIVATE $<TARGET_OBJECTS:SanitizerDefaults>)
    endif()
  endforeach()
  get_property(subfolders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(subfolder IN LISTS subfolders)
    set_up_sanitized_targets(${subfolder})
  endforeach()
endfunction()
set_up_sanitized_targets(${PROJECT_SOURCE_DIR})
