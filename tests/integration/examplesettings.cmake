# The installed example settings: the station takes them without a warning, finds the antenna setup valid, and knows
# every key of them.
#
# cmake -DPREFIX=... -DDATADIR=... -DWORK=... -P examplesettings.cmake

cmake_minimum_required(VERSION 3.25)

function(station)
    execute_process(
        COMMAND ${PREFIX}/bin/zanstation ${ARGV}
        RESULT_VARIABLE result
        OUTPUT_VARIABLE output
        ERROR_VARIABLE error)
    if(NOT result EQUAL 0 OR NOT error STREQUAL "")
        list(JOIN ARGV " " command)
        message(FATAL_ERROR "zanstation ${command}: ${result}\n${output}\n${error}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

# All keys of a settings file, with their sections.
function(read_keys file)
    file(STRINGS ${file} lines REGEX "^[A-Za-z[]")
    set(section "")
    set(keys "")
    foreach(line IN LISTS lines)
        if(line MATCHES "^[[](.*)]$")
            set(section "${CMAKE_MATCH_1}/")
        elseif(line MATCHES "^([^=]*)=")
            list(APPEND keys "${section}${CMAKE_MATCH_1}")
        endif()
    endforeach()
    set(keys "${keys}" PARENT_SCOPE)
endfunction()

set(example ${PREFIX}/${DATADIR}/doc/zanstation/examples/Application.ini)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/example)
file(COPY ${example} DESTINATION ${WORK}/example)

station(antennas check --config ${WORK}/example)
if(NOT output STREQUAL "Antenna setup is valid.\n")
    message(FATAL_ERROR "The example's antenna setup: ${output}")
endif()
station(device --config ${WORK}/example)
foreach(text "type            ZANTIDE\n" "options         ZAN-HFR;ZAN-LF\n" "Antenna setup is valid.\n")
    string(FIND "${output}" "${text}" at)
    if(at EQUAL -1)
        message(FATAL_ERROR "There is no ${text} in\n${output}")
    endif()
endforeach()

# What a station writes that begins without settings shows which keys there are. It has fewer antennas, and nobody
# has set its position.
station(run --driver simulator --speed max --duration 10 --output ${WORK}/sentences.txt --config ${WORK}/fresh)
read_keys(${WORK}/fresh/Application.ini)
set(known ${keys} ZANStations/ZANStation0/LocationLatitude ZANStations/ZANStation0/LocationLongitude)
read_keys(${example})
if(NOT "ZANStations/ZANStation0/DevType" IN_LIST keys)
    message(FATAL_ERROR "No keys are found in ${example}.")
endif()
foreach(key IN LISTS keys)
    string(REGEX REPLACE "Antenna[0-9]+/" "Antenna0/" key "${key}")
    if(NOT key IN_LIST known)
        message(FATAL_ERROR "The station has no key ${key}.")
    endif()
endforeach()
