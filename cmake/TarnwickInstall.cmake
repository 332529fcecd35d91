# What `cmake --install` puts where. The programs find the icons relative to themselves, so the whole may be moved.
include(GNUInstallDirs)
set(TARNWICK_WEBSITE https://tarnwick.org CACHE STRING "The maker's site, which shows the screenshots; no slash at the end")

# A folder of our own: some panels look up an item's icons in this folder alone, and there they need the theme's index,
# which the desktop's own folder has already.
set(TARNWICK_ICONS tarnwick/icons)
file(RELATIVE_PATH TARNWICK_ICONS_FROM_PROGRAM
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_DATADIR}/${TARNWICK_ICONS})

# The build tree gets them at the same place, seen from its programs.
set(TARNWICK_PROGRAMS ${PROJECT_BINARY_DIR}/app)
get_filename_component(icons_of_build ${TARNWICK_PROGRAMS}/${TARNWICK_ICONS_FROM_PROGRAM} ABSOLUTE)
get_filename_component(above_icons ${icons_of_build} DIRECTORY)
file(MAKE_DIRECTORY ${above_icons})
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/packaging/icons ${icons_of_build} SYMBOLIC)

# tarnwick_install(): once the programs are known.
function(tarnwick_install)
    install(TARGETS tarnwick-watch RUNTIME)
    configure_file(packaging/tarnwick-watch.service.in tarnwick-watch.service @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/tarnwick-watch.service DESTINATION lib/systemd/user)
    install(FILES packaging/60-tarnwick-ping.conf DESTINATION lib/sysctl.d)
    install(DIRECTORY packaging/icons/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/${TARNWICK_ICONS})
    install(FILES packaging/icons/hicolor/scalable/apps/org.tarnwick.tarnwick.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
    if(TARNWICK_DESKTOP)
        install(TARGETS tarnwick RUNTIME)
        install(TARGETS tarnwick-update RUNTIME COMPONENT bundle EXCLUDE_FROM_ALL)
        install(DIRECTORY ${TARNWICK_EXTENSIONS} DESTINATION ${CMAKE_INSTALL_DATADIR}/gnome-shell)
        install(FILES packaging/org.tarnwick.tarnwick.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
        configure_file(packaging/org.tarnwick.tarnwick.metainfo.xml.in org.tarnwick.tarnwick.metainfo.xml @ONLY)
        install(FILES ${PROJECT_BINARY_DIR}/org.tarnwick.tarnwick.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
    endif()
endfunction()
