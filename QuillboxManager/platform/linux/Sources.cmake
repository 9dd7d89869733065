target_sources(quillbox_platform PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/HostProcess.cpp
    ${CMAKE_CURRENT_LIST_DIR}/LinuxFolders.cpp
    ${CMAKE_CURRENT_LIST_DIR}/LanguageEnvironment.cpp
    ${CMAKE_CURRENT_LIST_DIR}/RunTask.cpp
    ${CMAKE_CURRENT_LIST_DIR}/Spawn.cpp
    ${CMAKE_CURRENT_LIST_DIR}/Task.cpp)
