list(APPEND host_sources
    DesktopPortal.cpp DesktopProxies.cpp HostProcess.cpp LanguageEnvironment.cpp LinuxDeviceIdentity.cpp
    LinuxDistributedNotifications.cpp LinuxFileSystemDriver.cpp LinuxFolders.cpp LinuxHost.cpp LinuxLaunchEvents.cpp
    LinuxReducedMotion.cpp LinuxSidebarFavorites.cpp LinuxUserNotifications.cpp LinuxVolumes.cpp LinuxWorkspace.cpp
    MountTable.cpp PlacesFiles.cpp RedirectPage.cpp RunTask.cpp SessionBus.cpp Spawn.cpp Task.cpp)
list(TRANSFORM host_sources PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
target_sources(quillbox_platform PRIVATE ${host_sources})
