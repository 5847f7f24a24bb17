# Installed: the libraries, the headers in a folder of their own (they bear the platform's header names), a CMake
# package (find_package(TKKernel) gives TKKernel::tkkernel) and a pkg-config file. CPack makes the Windows package of it.
include(CMakePackageConfigHelpers)

set(tk_include_dir "${CMAKE_INSTALL_INCLUDEDIR}/tkkernel${PROJECT_VERSION_MAJOR}")
set(tk_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/TKKernel")
set(tk_libraries tkkernel)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/tkkernel" DESTINATION "${tk_include_dir}" FILES_MATCHING PATTERN "*.h")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/afx/include/" DESTINATION "${tk_include_dir}" FILES_MATCHING PATTERN "*.h")
target_include_directories(tkkernel INTERFACE "$<INSTALL_INTERFACE:${tk_include_dir}>")
if(NOT WIN32)
    list(APPEND tk_libraries tkwin32)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/win32/include/" DESTINATION "${tk_include_dir}" FILES_MATCHING PATTERN "*.h")
    target_include_directories(tkwin32 INTERFACE "$<INSTALL_INTERFACE:${tk_include_dir}>")
    # Loaded by class identifier, from beside libtkwin32: never linked against, hence no exported target.
    install(TARGETS tkado LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
    if(TK_BUILD_TOOLS)
        install(TARGETS tkdb RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    endif()
endif()

install(TARGETS ${tk_libraries} EXPORT TKKernelTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(EXPORT TKKernelTargets NAMESPACE TKKernel:: DESTINATION "${tk_package_dir}")
configure_package_config_file(
    "${PROJECT_SOURCE_DIR}/packaging/TKKernelConfig.cmake.in" "${PROJECT_BINARY_DIR}/TKKernelConfig.cmake"
    INSTALL_DESTINATION "${tk_package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TKKernelConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TKKernelConfig.cmake" "${PROJECT_BINARY_DIR}/TKKernelConfigVersion.cmake"
    DESTINATION "${tk_package_dir}")

if(NOT WIN32)
    configure_file("${PROJECT_SOURCE_DIR}/packaging/tkkernel.pc.in" "${PROJECT_BINARY_DIR}/tkkernel.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/tkkernel.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
else()
    target_compile_definitions(tkkernel INTERFACE "$<INSTALL_INTERFACE:TKKERNEL_API=__declspec(dllimport)>"
                                                  "$<INSTALL_INTERFACE:AFX_API=__declspec(dllimport)>")
    configure_file("${PROJECT_SOURCE_DIR}/packaging/windows/README.md.in" "${PROJECT_BINARY_DIR}/windows-package.md" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/windows-package.md" DESTINATION . RENAME README.md)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/warehouse" DESTINATION examples PATTERN README.md EXCLUDE)
    install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION licences RENAME TKKernel32.txt)
    # The compiler's run-time libraries are linked into the DLL.
    foreach(package IN ITEMS gcc-mingw-w64-base mingw-w64-x86-64-dev)
        install(FILES "/usr/share/doc/${package}/copyright" DESTINATION licences RENAME "${package}.txt")
    endforeach()

    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME "TKKernel32-${PROJECT_VERSION}${TKKERNEL_VERSION_SUFFIX}-win64")
    set(CPACK_STRIP_FILES ON)
    set(CPACK_VERBATIM_VARIABLES ON)
    include(CPack)
endif()
