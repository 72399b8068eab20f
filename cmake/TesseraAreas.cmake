# Each subsystem is an object library ("area"); the shared and static libraries are made
# from all of them, and each test executable links only the areas it exercises, so one
# subsystem can be built and tested while another is still in pieces.

set(TESSERA_WARNINGS -Wall -Wextra -Wpedantic)
if(TESSERA_WERROR)
  list(APPEND TESSERA_WARNINGS -Werror)
endif()

set(TESSERA_SANITIZER_FLAGS "")
if(TESSERA_SANITIZE)
  set(TESSERA_SANITIZER_FLAGS -fsanitize=${TESSERA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
endif()

# Flags shared by every target of the project, library or not. Paths in __FILE__ and in the
# debug information are relative to the tree, so two checkouts build the same library.
add_library(tessera_flags INTERFACE)
target_compile_options(tessera_flags INTERFACE ${TESSERA_WARNINGS} ${TESSERA_SANITIZER_FLAGS}
  "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
target_link_options(tessera_flags INTERFACE ${TESSERA_SANITIZER_FLAGS})
if(TESSERA_BUILD_FUZZERS)
  # Coverage for the fuzzers reaches into the library's own code.
  target_compile_options(tessera_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

set_property(GLOBAL PROPERTY TESSERA_AREAS "")
set_property(GLOBAL PROPERTY TESSERA_AREA_LIBS "")

# The known areas, in the order of their dependencies; a folder of another name is an error.
set(TESSERA_AREA_ORDER plaint frame win32 text time skein memory events timers internet numerics platform)

function(tessera_check_area name)
  if(NOT name IN_LIST TESSERA_AREA_ORDER)
    message(FATAL_ERROR "Unknown area '${name}': add it to TESSERA_AREA_ORDER in cmake/TesseraAreas.cmake")
  endif()
endfunction()

# tessera_add_area_folders(<roots...> [EXCEPT <folders...>])
# Adds <root>/<area> for every area, in the order above. Every folder of a root with a
# CMakeLists.txt must be a known area, and every area folder must have one, so that
# nothing is skipped unnoticed.
function(tessera_add_area_folders)
  cmake_parse_arguments(ARG "" "" "EXCEPT" ${ARGN})
  foreach(root IN LISTS ARG_UNPARSED_ARGUMENTS)
    file(GLOB lists CONFIGURE_DEPENDS ${root}/*/CMakeLists.txt)
    foreach(list IN LISTS lists)
      get_filename_component(folder ${list} DIRECTORY)
      get_filename_component(name ${folder} NAME)
      if(NOT name IN_LIST ARG_EXCEPT)
        tessera_check_area(${name})
      endif()
    endforeach()
  endforeach()
  foreach(area IN LISTS TESSERA_AREA_ORDER)
    foreach(root IN LISTS ARG_UNPARSED_ARGUMENTS)
      if(EXISTS ${root}/${area}/CMakeLists.txt)
        add_subdirectory(${root}/${area})
      elseif(IS_DIRECTORY ${root}/${area})
        message(FATAL_ERROR "Area folder ${root}/${area} has no CMakeLists.txt")
      endif()
    endforeach()
  endforeach()
endfunction()

# tessera_add_area(<name> SOURCES <files...> [LIBS <link items...>])
function(tessera_add_area name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  tessera_check_area(${name})
  if(NOT ARG_SOURCES)
    message(FATAL_ERROR "Area '${name}' has no sources")
  endif()
  set(target tessera_area_${name})
  add_library(${target} OBJECT ${ARG_SOURCES})
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>)
  target_link_libraries(${target} PUBLIC tessera_flags Boost::headers Threads::Threads ${ARG_LIBS})
  set_property(GLOBAL APPEND PROPERTY TESSERA_AREAS ${name})
  set_property(GLOBAL APPEND PROPERTY TESSERA_AREA_LIBS ${ARG_LIBS})
endfunction()

# Links the objects of the named areas into an executable.
function(tessera_link_areas target)
  foreach(area IN LISTS ARGN)
    tessera_check_area(${area})
    if(NOT TARGET tessera_area_${area})
      message(FATAL_ERROR "${target} needs area '${area}', which has no sources yet")
    endif()
    target_link_libraries(${target} PRIVATE tessera_area_${area})
  endforeach()
endfunction()

# tessera_add_test(<name> AREAS <areas...> SOURCES <files...> [LIBS <items...>] [LABELS <labels...>])
# Tests link the objects of the areas they name and see their internal headers.
function(tessera_add_test name)
  cmake_parse_arguments(ARG "" "" "AREAS;SOURCES;LIBS;LABELS" ${ARGN})
  set(target test_${name})
  add_executable(${target} ${ARG_SOURCES})
  tessera_link_areas(${target} ${ARG_AREAS})
  target_link_libraries(${target} PRIVATE GTest::gtest GTest::gtest_main ${ARG_LIBS})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  add_test(NAME ${name} COMMAND ${target})
  if(ARG_LABELS)
    set_tests_properties(${name} PROPERTIES LABELS "${ARG_LABELS}")
  endif()
endfunction()

# tessera_add_bench(<name> AREAS <areas...> SOURCES <files...> [LIBS <items...>])
function(tessera_add_bench name)
  cmake_parse_arguments(ARG "" "" "AREAS;SOURCES;LIBS" ${ARGN})
  add_executable(bench_${name} ${ARG_SOURCES})
  tessera_link_areas(bench_${name} ${ARG_AREAS})
  target_link_libraries(bench_${name} PRIVATE benchmark::benchmark ${ARG_LIBS})
endfunction()

# tessera_add_fuzzer(<name> AREAS <areas...> SOURCES <files...> [LIBS <items...>])
# Built with clang's -fsanitize=fuzzer; the fuzz preset adds ASan and UBSan.
function(tessera_add_fuzzer name)
  cmake_parse_arguments(ARG "" "" "AREAS;SOURCES;LIBS" ${ARGN})
  add_executable(fuzz_${name} ${ARG_SOURCES})
  tessera_link_areas(fuzz_${name} ${ARG_AREAS})
  target_compile_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(fuzz_${name} PRIVATE ${ARG_LIBS})
endfunction()
