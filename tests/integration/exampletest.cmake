# Builds an example against the installed project, runs it, and compares what it prints with its expected.txt.
#
# cmake -DEXAMPLE=... -DWORK=... -DPREFIX=... -DLIBDIR=... -DCXX=... -P exampletest.cmake

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(READ ${EXAMPLE}/expected.txt expected)
function(check program)
    run(${CMAKE_COMMAND} -E chdir ${WORK} ${program})
    string(REPLACE "\r" "" output "${output}")
    if(NOT output STREQUAL expected)
        message(FATAL_ERROR "${program} prints\n${output}\ninstead of\n${expected}")
    endif()
endfunction()

get_filename_component(name ${EXAMPLE} NAME)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
set(ENV{QT_QPA_PLATFORM} offscreen)
set(ENV{LC_ALL} C.UTF-8)

run(${CMAKE_COMMAND} -S ${EXAMPLE} -B ${WORK}/build -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_CXX_COMPILER=${CXX}
    "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Werror")
run(${CMAKE_COMMAND} --build ${WORK}/build)
check(${WORK}/build/${name})

if(name STREQUAL consumer)
    set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
    run(pkg-config --cflags --libs zancommon)
    separate_arguments(flags UNIX_COMMAND "${output}")
    run(${CXX} -fPIC ${EXAMPLE}/consumer.cpp -o ${WORK}/consumer ${flags} -Wl,-rpath,${PREFIX}/${LIBDIR})
    check(${WORK}/consumer)
endif()
