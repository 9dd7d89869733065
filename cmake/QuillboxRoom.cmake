# A room is a folder, a static library and a place in the link order. It may include only itself and the rooms before it
# that it names; the check below refuses a wrong edge when the build is configured. The last one, web, is a plug-in: no
# room stands behind it that could link it.
set(QUILLBOX_ROOM_ORDER platform files state api channel ui update login shell web)

# quillbox_room(NAME [USES room...] [LINKS target...] SOURCES file...)
function(quillbox_room name)
    cmake_parse_arguments(ARG "" "" "USES;LINKS;SOURCES" ${ARGN})
    list(FIND QUILLBOX_ROOM_ORDER ${name} position)
    foreach(room IN LISTS ARG_USES)
        list(FIND QUILLBOX_ROOM_ORDER ${room} used)
        if(used LESS 0 OR NOT used LESS position)
            message(FATAL_ERROR "room ${name} may not use ${room}: order is ${QUILLBOX_ROOM_ORDER}")
        endif()
    endforeach()
    list(TRANSFORM ARG_USES PREPEND quillbox_ OUTPUT_VARIABLE rooms)
    add_library(quillbox_${name} STATIC ${ARG_SOURCES})
    # Includes are written "room/File.h"; only the named rooms' private include roots are visible.
    set(include_root ${CMAKE_BINARY_DIR}/include/${name})
    file(MAKE_DIRECTORY ${include_root})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${include_root}/${name} SYMBOLIC)
    target_include_directories(quillbox_${name} PUBLIC ${include_root})
    target_link_libraries(quillbox_${name} PUBLIC ${rooms} ${ARG_LINKS} PRIVATE quillbox_common)
endfunction()
