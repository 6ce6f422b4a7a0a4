# What projects meet that look for the installed library, by CMake and by pkg-config: only a project that asks for the broker
# needs omniORB, and what is missing is reported without a word of its own and without an end of the configuration.
#
# cmake -DBUILD=... -DPREFIX=... -DLIBDIR=... -DINCLUDEDIR=... -DCXX=... -DWORK=... -P findpackagetest.cmake

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

# configure(NAME PREFIX EXPECTED [option...]): the project says what is expected, one line a look, and nothing else.
function(configure name prefix expected)
    run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/findpackage -B ${WORK}/${name} -DCMAKE_PREFIX_PATH=${prefix}
        -DCMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=$ENV{POISON} -Wall -Wextra -Wpedantic -Werror" ${ARGN})
    string(REGEX REPLACE ".*-- look begin\n(.*)-- look end\n.*" "\\1" said "${output}")
    if(NOT said STREQUAL expected OR NOT error STREQUAL "")
        message(FATAL_ERROR "${name}: the project says\n${said}${error}\ninstead of\n${expected}")
    endif()
endfunction()

set(needsOmniOrb "ZANCommon's broker needs omniORB 4.2 or newer, as pkg-config knows it \
(on Debian: libomniorb4-dev and pkg-config)")
set(nothing "ZANCommon has no component \"nothing\"; there are: server, broker")
set(noComponent "-- look COMPONENTS nothing: ${nothing}\n--   nothing: ${nothing}\n\
-- look OPTIONAL_COMPONENTS nothing: found\n--   nothing: ${nothing}\n-- look 9.9: \n")
set(needsQt "ZANCommon could not be found because dependency Qt6 could not be found.")
file(REMOVE_RECURSE ${WORK})

# omniORB is there.
configure(
    complete ${PREFIX} "-- look : found\n-- look COMPONENTS server: found\n--   server: found\n-- look COMPONENTS broker: found\n--   broker: found\n\
-- look OPTIONAL_COMPONENTS broker: found\n--   broker: found\n${noComponent}")
run(${CMAKE_COMMAND} --build ${WORK}/complete --target broker)
set(ENV{ORBendPoint} giop:tcp:127.0.0.1:)
run(${WORK}/complete/broker)
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
run(pkg-config --cflags --libs zancommon-broker)
separate_arguments(flags UNIX_COMMAND "${output}")
run(${CXX} -fPIC ${CMAKE_CURRENT_LIST_DIR}/findpackage/broker.cpp -o ${WORK}/broker ${flags}
    -Wl,-rpath,${PREFIX}/${LIBDIR})
run(${WORK}/broker)

# Dependencies of CMake's package are missing.
configure(
    noqt ${PREFIX}
    "-- look : ${needsQt}\n-- look COMPONENTS server: ${needsQt}\n-- look COMPONENTS broker: ${needsQt}\n-- look OPTIONAL_COMPONENTS broker: ${needsQt}\n\
-- look COMPONENTS nothing: ${needsQt}\n-- look OPTIONAL_COMPONENTS nothing: ${needsQt}\n-- look 9.9: \n"
    -DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON)
set(found "-- look : found\n-- look COMPONENTS server: found\n--   server: found\n-- look COMPONENTS broker: ${needsOmniOrb}\n--   broker: ${needsOmniOrb}\n\
-- look OPTIONAL_COMPONENTS broker: found\n--   broker: ${needsOmniOrb}\n")
configure(nopkgconfig ${PREFIX} "${found}${noComponent}" -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON)

# omniORB's development files are not there: pkg-config knows Qt only, and who includes the headers does not compile.
run(pkg-config --variable=pcfiledir Qt6Core)
string(STRIP "${output}" system)
file(COPY ${system}/Qt6Core.pc ${system}/Qt6Platform.pc DESTINATION ${WORK}/pkgconfig)
file(WRITE ${WORK}/poison/omniORB4/CORBA.h "#error omniORB is not there\n")
set(ENV{PKG_CONFIG_LIBDIR} ${WORK}/pkgconfig)
set(ENV{POISON} -I${WORK}/poison)
configure(noomniorb ${PREFIX} "${found}${noComponent}")
run(${CMAKE_COMMAND} --build ${WORK}/noomniorb --target plain)
run(${WORK}/noomniorb/plain)
run(pkg-config --cflags --libs zancommon zancommon-server)
if(output MATCHES "omni")
    message(FATAL_ERROR "pkg-config wants omniORB for zancommon: ${output}")
endif()
execute_process(COMMAND pkg-config --print-errors --exists zancommon-broker RESULT_VARIABLE result ERROR_VARIABLE error)
if(result EQUAL 0 OR NOT error MATCHES "omniORB4")
    message(FATAL_ERROR "pkg-config finds zancommon-broker without omniORB: ${result} ${error}")
endif()

# What is for the broker is not installed, as without its package.
run(${CMAKE_COMMAND} --install ${BUILD} --component runtime --prefix ${WORK}/lean)
run(${CMAKE_COMMAND} --install ${BUILD} --component development --prefix ${WORK}/lean)
if(EXISTS ${WORK}/lean/${INCLUDEDIR}/zancommon/zancommon/zanserverorb.h)
    message(FATAL_ERROR "The broker's header goes with the others.")
endif()
string(REPLACE "${needsOmniOrb}" "The header of ZANCommon's broker is not installed \
(on Debian: libzancommon-broker-dev)" expected "${found}${noComponent}")
configure(lean ${WORK}/lean "${expected}")
