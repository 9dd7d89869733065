# One INTERFACE target carries the language level, the warnings and the hardening of every target.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTOUIC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

include(CheckLinkerFlag)
add_library(quillbox_common INTERFACE)
target_compile_options(quillbox_common INTERFACE
    -Wall -Wextra -Wpedantic -Werror -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wconversion
    -Wno-sign-conversion -Wno-missing-field-initializers
    -fstack-protector-strong -fno-plt)
target_compile_definitions(quillbox_common INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_KEYWORDS
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_link_options(quillbox_common INTERFACE -Wl,-z,relro,-z,now -Wl,--as-needed)
# Programs with debug information link several times faster with it.
check_linker_flag(CXX -fuse-ld=lld QUILLBOX_HAS_LLD)
if(QUILLBOX_HAS_LLD)
    target_link_options(quillbox_common INTERFACE -fuse-ld=lld)
endif()
if(CMAKE_BUILD_TYPE MATCHES "Rel")
    target_compile_definitions(quillbox_common INTERFACE _FORTIFY_SOURCE=2)
endif()
if(QUILLBOX_SANITIZE)
    target_compile_options(quillbox_common INTERFACE
        -fsanitize=${QUILLBOX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(quillbox_common INTERFACE -fsanitize=${QUILLBOX_SANITIZE})
endif()
