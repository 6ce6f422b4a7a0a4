# Installs the project into a folder of its own and moves that folder to PREFIX, so that nothing depends on the place.
# Then looks whether everything is there that an installed system needs. Others build and run against PREFIX.
#
# cmake -DBUILD=... -DSOURCE=... -DPREFIX=... -DVERSION=... -DLIBDIR=... -DINCLUDEDIR=... -DDATADIR=... -DMANDIR=...
#       -P installtree.cmake

cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${PREFIX} ${PREFIX}.first)
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX}.first)
file(RENAME ${PREFIX}.first ${PREFIX})

foreach(
    file
    bin/zanstation
    ${LIBDIR}/libzancommon.so
    ${LIBDIR}/libzanplatform.so
    ${LIBDIR}/libzanserver.so
    ${LIBDIR}/zancommon/components/libzandriver-krakensdr.so
    ${LIBDIR}/zancommon/components/libzandriver-replay.so
    ${LIBDIR}/zancommon/components/libzandriver-simulator.so
    ${LIBDIR}/zancommon/components/libzandriver-stream.so
    ${LIBDIR}/cmake/ZANCommon/ZANCommonConfig.cmake
    ${LIBDIR}/cmake/ZANCommon/ZANCommonConfigVersion.cmake
    ${LIBDIR}/cmake/ZANCommon/ZANCommonTargets.cmake
    ${LIBDIR}/cmake/ZANCommon/ZANCommonBrokerTargets.cmake
    ${LIBDIR}/pkgconfig/zancommon.pc
    ${LIBDIR}/pkgconfig/zancommon-broker.pc
    ${LIBDIR}/pkgconfig/zancommon-server.pc
    ${INCLUDEDIR}/zancommon/zancommon_export.h
    ${INCLUDEDIR}/zancommon/zanplatform_export.h
    ${INCLUDEDIR}/zancommon/zanserver_export.h
    ${INCLUDEDIR}/zancommon/stddevicedefinition/stddevicedescriptors.def
    ${INCLUDEDIR}/zancommon/valueframework/tree.h
    ${INCLUDEDIR}/zancommon/zancommon/zancharacteristics.h
    ${INCLUDEDIR}/zancommon/zanserver/station.h
    ${INCLUDEDIR}/zancommon/zancommon/zanserverorb.h
    ${MANDIR}/man1/zanstation.1
    ${DATADIR}/doc/libzancommon-dev/README.md
    ${DATADIR}/doc/libzancommon-dev/docs/gettingstarted.md
    ${DATADIR}/doc/libzancommon-dev/examples/consumer/CMakeLists.txt
    ${DATADIR}/doc/zanstation/examples/Application.ini
    ${DATADIR}/zancommon/scenarios/airfield.json
    ${DATADIR}/zancommon/scenarios/ship.json
    ${DATADIR}/zancommon/translations/zancommon_de.qm)
    if(NOT EXISTS ${PREFIX}/${file})
        message(FATAL_ERROR "${file} is not installed.")
    endif()
endforeach()

# The files that say to other projects where things are must not name the place where they were made.
file(GLOB texts ${PREFIX}/${LIBDIR}/cmake/ZANCommon/* ${PREFIX}/${LIBDIR}/pkgconfig/*)
foreach(text ${texts})
    file(READ ${text} content)
    foreach(folder ${BUILD} ${SOURCE} ${PREFIX}.first)
        string(FIND "${content}" "${folder}/" at)
        if(NOT at EQUAL -1)
            message(FATAL_ERROR "${text} names ${folder}.")
        endif()
    endforeach()
endforeach()

# Two incompatible versions have different sonames.
string(REGEX MATCH "^[0-9]+\\.[0-9]+" abi ${VERSION})
foreach(library zanplatform zancommon zanserver)
    if(NOT EXISTS ${PREFIX}/${LIBDIR}/lib${library}.so.${abi})
        message(FATAL_ERROR "The soname of lib${library} does not end with ${abi}.")
    endif()
endforeach()

run(${PREFIX}/bin/zanstation --version)
if(NOT output STREQUAL "zanstation ${VERSION}\n")
    message(FATAL_ERROR "zanstation --version prints ${output}")
endif()
