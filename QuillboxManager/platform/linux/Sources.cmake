list(APPEND host_sources
    HostProcess.cpp LanguageEnvironment.cpp LaunchRequest.cpp LinuxDeviceIdentity.cpp
    LinuxDistributedNotifications.cpp LinuxFileSystemDriver.cpp LinuxFolders.cpp LinuxHost.cpp LinuxLaunchEvents.cpp
    LinuxSidebarFavorites.cpp LinuxVolumes.cpp LinuxWorkspace.cpp MountTable.cpp PlacesFiles.cpp RunTask.cpp
    SessionBus.cpp Spawn.cpp Task.cpp)
list(TRANSFORM host_sources PREPEND ${CMAKE_CURRENT_LIST_DIR}/)
target_sources(quillbox_platform PRIVATE ${host_sources})
