# `cpack -G DEB` in a build directory makes a Debian package of what gets installed. The libraries
# that the program was linked with become its dependencies.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The Korvel authors <maintainers@korvel.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION
"Korvel looks for positions and orientations of dies (chiplets) in an area with a short total
wirelength. It reads Bookshelf floorplanning files, judges placements of its own and of other tools,
and draws them.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Draws the pictures of the classic interface.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "gnuplot-nox | gnuplot")
include(CPack)
