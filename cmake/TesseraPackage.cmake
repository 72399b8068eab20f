# Debian packages from the two install components (scripts/package.sh runs cpack on a build
# configured for /usr): libtessera<SONAME major> holds the shared library, libtessera-dev the
# rest. The runtime package's name follows the SONAME, so raising the major version renames it.

set(TESSERA_RUNTIME_PACKAGE libtessera${PROJECT_VERSION_MAJOR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tessera)
set(CPACK_PACKAGE_VENDOR "Tessera")
set(CPACK_PACKAGE_CONTACT "Tessera maintainers <tessera@example.org>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${TESSERA_RUNTIME_PACKAGE})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The first line of a description is its summary, a blank line separates paragraphs.
set(TESSERA_PACKAGE_ABOUT "Tessera gives Linux programs the buffers, events, timers, time, text, \
Internet text and numerics of a 32-bit Windows utility library, with the same texts, bits and \
errors.")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "Utility library for programs from 32-bit Windows
${TESSERA_PACKAGE_ABOUT}

This package holds the shared library.")
# A shlibs file for packages built against this one, and ldconfig on install and removal.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
find_program(TESSERA_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(TESSERA_DPKG_SHLIBDEPS)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
else()
  # What dpkg-shlibdeps finds on Debian 12.
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS
      "libc6 (>= 2.34), libgcc-s1 (>= 3.0), libicu72 (>= 72.1~rc-1~), libstdc++6 (>= 12)")
endif()

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtessera-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "Utility library for programs from 32-bit Windows (development files)
${TESSERA_PACKAGE_ABOUT}

This package holds the headers, the static library, the CMake package and the pkg-config file.")
# The public headers include Boost; the static library links ICU's converters.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${TESSERA_RUNTIME_PACKAGE} (= ${PROJECT_VERSION}), libboost-dev (>= 1.74), libicu-dev")

include(CPack)
