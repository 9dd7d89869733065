# Application bundles: Name.app/Contents/{Info.plist,MacOS/Name,Resources,PlugIns}, relocatable, the same on every host.
set(QUILLBOX_BUNDLE ${CMAKE_BINARY_DIR}/Quillbox.app)
set(QUILLBOX_RESOURCES ${QUILLBOX_BUNDLE}/Contents/Resources)
set(QUILLBOX_PLUGINS ${QUILLBOX_BUNDLE}/Contents/PlugIns)

# quillbox_bundle_executable(TARGET BUNDLE_PATH INFO_PLIST_TEMPLATE)
function(quillbox_bundle_executable target bundle info)
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${bundle}/Contents/MacOS)
    configure_file(${info} ${bundle}/Contents/Info.plist @ONLY)
endfunction()

# quillbox_resources(DESTINATION file...): copies files into the bundle whenever they change.
function(quillbox_resources target destination)
    set(copies)
    foreach(file IN LISTS ARGN)
        get_filename_component(name ${file} NAME)
        get_filename_component(source ${file} ABSOLUTE)
        set(copy ${destination}/${name})
        add_custom_command(OUTPUT ${copy}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${destination}
            COMMAND ${CMAKE_COMMAND} -E copy ${source} ${copy}
            DEPENDS ${source} VERBATIM)
        list(APPEND copies ${copy})
    endforeach()
    add_custom_target(${target} ALL DEPENDS ${copies})
endfunction()
