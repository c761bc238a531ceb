# What `cmake --install` puts in place: the player, the diagnostic tool and its face program,
# the face models (when ./lumo setup fetched them), and the desktop's files: entry, icon and
# AppStream metainfo.
# `cpack -G DEB` makes a Debian package of the same.
include(GNUInstallDirs)

install(TARGETS LumoMediaPlayer lumo-cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# What `lumo-cli faces` runs; lumo-cli finds it from its own folder.
install(TARGETS lumo-cli-faces RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/LumoMediaPlayer)
# The player looks for them beside its bin folder.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/.lumo/face-models/
        DESTINATION ${CMAKE_INSTALL_DATADIR}/LumoMediaPlayer/face-models OPTIONAL)
install(FILES ${PROJECT_SOURCE_DIR}/data/LumoMediaPlayer.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_SOURCE_DIR}/data/LumoMediaPlayer.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${PROJECT_SOURCE_DIR}/data/org.lumomediaplayer.LumoMediaPlayer.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

set(CPACK_PACKAGE_NAME lumomediaplayer)
set(CPACK_PACKAGE_VENDOR "LumoMediaPlayer")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "Media player for files, streams, IPTV playlists and YouTube, with recording")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "LumoMediaPlayer developers <lumo@localhost>")
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# The dependencies are those of the libraries the programs actually link (dpkg-shlibdeps),
# plus the sound server's tools and the face cascade the player reads at run time.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "opencv-data")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pulseaudio | pipewire-pulse")
set(CPACK_GENERATOR DEB)
include(CPack)
