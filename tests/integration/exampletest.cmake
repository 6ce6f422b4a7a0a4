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

# The component runs in the installed station. Its device has soon no more to measure: it is lost when the run ends, which
# is a failure.
if(name STREQUAL driver)
    execute_process(COMMAND ${PREFIX}/bin/zanstation run --config ${WORK}/config --components ${WORK}/build
                            --driver example --address demo --duration 0.5 --output ${WORK}/sentences.txt
                    RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE errors)
    if(NOT result EQUAL 1 OR NOT errors MATCHES "the device was lost when the run ended: the driver has closed the link")
        message(FATAL_ERROR "The run with the example driver ends with ${result}:\n${errors}")
    endif()
    file(STRINGS ${WORK}/sentences.txt sentences LIMIT_COUNT 1)
    if(NOT sentences MATCHES "^[$]PLG, 71[.]5,FRQ, 100000000,CMP, 90[.]0,QUA, 90[.]0,LEV,-42[.]5,TIM,000000,")
        message(FATAL_ERROR "The station makes of the example driver:\n${sentences}")
    endif()
endif()
