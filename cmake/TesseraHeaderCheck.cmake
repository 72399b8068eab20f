# Every public header compiled alone, the way a client includes it: the include folder as an
# ordinary (not a system) path, strict warnings as errors, in each standard a client may use.
# Built with the plain tests and with the fuzzers, so that both compilers of CI check it.
set(TESSERA_CLIENT_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
    -Wold-style-cast -Wnon-virtual-dtor -Werror)

file(GLOB_RECURSE tessera_public_headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/include
     ${PROJECT_SOURCE_DIR}/include/*.h)
foreach(standard IN ITEMS 17 20 23)
  set(sources "")
  foreach(header IN LISTS tessera_public_headers)
    string(MAKE_C_IDENTIFIER ${header} name)
    set(source ${PROJECT_BINARY_DIR}/header_check/${standard}/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include <${header}>\n")
    list(APPEND sources ${source})
  endforeach()
  set(target tessera_header_check_${standard})
  add_library(${target} OBJECT ${sources})
  set_target_properties(${target} PROPERTIES CXX_STANDARD ${standard} CXX_STANDARD_REQUIRED ON
                                             CXX_EXTENSIONS OFF)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(${target} PRIVATE Boost::headers)
  target_compile_options(${target} PRIVATE ${TESSERA_CLIENT_WARNINGS})
endforeach()
