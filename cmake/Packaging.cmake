# A Debian package of the one program, for the architecture it is built for.
set(CPACK_GENERATOR DEB)
string(TOLOWER ${UNIT_MODEL} model_in_lower_case)
set(CPACK_PACKAGE_NAME upload-gateway-${model_in_lower_case})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Firmware team <firmware@example.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "file-upload gateway of an AV-over-IP unit, ${UNIT_MODEL}")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "CGI program behind the upload button of the unit's web interface: it takes\nunit configurations, RS-232, IR and trigger lists, video-wall layouts and\ncustom EDIDs, and hands out the unit's certificates in encrypted form.")
set(CPACK_DEBIAN_PACKAGE_SECTION web)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

# Cross builds have no dpkg-shlibdeps that would look into the target's libraries, and the two
# libraries are all there is; a test compares them with what the program asks for.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libc6 (>= 2.34), libcjson1 (>= 1.7.13)")
if(CMAKE_CROSSCOMPILING)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
endif()

# What Debian expects beside a program: where it comes from and what changed.
install(FILES ${PROJECT_SOURCE_DIR}/packaging/debian/copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_PACKAGE_NAME} COMPONENT debian EXCLUDE_FROM_ALL)
set(changelog ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
configure_file(packaging/debian/changelog.in changelog @ONLY)
execute_process(COMMAND gzip -9nc ${CMAKE_CURRENT_BINARY_DIR}/changelog OUTPUT_FILE ${changelog})
install(FILES ${changelog} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_PACKAGE_NAME}
        COMPONENT debian EXCLUDE_FROM_ALL)

set(CPACK_COMPONENTS_ALL program debian)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ALL_COMPONENTS_IN_ONE)

include(CPack)
