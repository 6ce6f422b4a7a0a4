# Installs the project into a folder of its own, moves that folder, builds the example application against it, by the
# CMake package and by pkg-config, and runs both. Nothing of the build tree is used.
#
# cmake -DBUILD=... -DSOURCE=... -DWORK=... -DLIBDIR=... -DCXX=... -P consumertest.cmake

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "${ARGV}\n${output}\n${error}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

set(expected "valid range: 30000001 Hz to 40000001 Hz, served
$PLG, 71.5,FRQ,  30000001,CMP,  0.0,QUA, 90.0,LEV, -0.5,TIM,,ELV,10.0,PTC,0.0,RLL,0.0,ALT,0.0,PTM,000000,LAT,  0.00000,LON,0.0000000")
function(check_consumer program)
    run(${program})
    string(REPLACE "\r" "" output "${output}")
    string(STRIP "${output}" output)
    if(NOT output STREQUAL expected)
        message(FATAL_ERROR "${program} prints\n${output}\ninstead of\n${expected}")
    endif()
endfunction()

file(REMOVE_RECURSE ${WORK})
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/first)
file(RENAME ${WORK}/first ${WORK}/prefix)

run(${CMAKE_COMMAND} -S ${SOURCE}/examples/consumer -B ${WORK}/build -DCMAKE_PREFIX_PATH=${WORK}/prefix
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_CXX_FLAGS=-Werror)
run(${CMAKE_COMMAND} --build ${WORK}/build)
check_consumer(${WORK}/build/consumer)

set(ENV{PKG_CONFIG_PATH} ${WORK}/prefix/${LIBDIR}/pkgconfig)
run(pkg-config --cflags --libs zancommon)
separate_arguments(flags UNIX_COMMAND "${output}")
run(${CXX} -fPIC ${SOURCE}/examples/consumer/consumer.cpp -o ${WORK}/consumer ${flags}
    -Wl,-rpath,${WORK}/prefix/${LIBDIR})
check_consumer(${WORK}/consumer)

run(${WORK}/prefix/bin/zanstation --version)
