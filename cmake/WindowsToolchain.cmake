# Compiles for Windows on a Debian machine, as far as objects: the compiler and the system's headers are those of
# Windows, the toolkit's headers are the ones installed here, which ask the compiler for the system. For
# scripts/check-windows; nothing can be linked.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_LIBRARY_ARCHITECTURE "${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu")
set(CMAKE_PREFIX_PATH /usr)

# Libraries whose headers lie beside those of the C library, which must not be read.
get_filename_component(headers "${CMAKE_CURRENT_LIST_DIR}/../build/windows-headers" ABSOLUTE)
file(MAKE_DIRECTORY "${headers}")
file(GLOB parser RELATIVE /usr/include /usr/include/muParser*.h)
foreach(name archive.h archive_entry.h zlib.h zconf.h kissfft gsl ${parser})
    file(CREATE_LINK "/usr/include/${name}" "${headers}/${name}" SYMBOLIC)
endforeach()
foreach(directory LibArchive_INCLUDE_DIR ZLIB_INCLUDE_DIR KISSFFT_INCLUDE_DIR MUPARSER_INCLUDE_DIR GSL_INCLUDE_DIR)
    set(${directory} "${headers}" CACHE PATH "")
endforeach()
# Looked for, but never opened.
foreach(library QWT_LIBRARY LibArchive_LIBRARY ZLIB_LIBRARY MUPARSER_LIBRARY GSL_LIBRARY GSL_CBLAS_LIBRARY)
    set(${library} "${headers}" CACHE FILEPATH "")
endforeach()
