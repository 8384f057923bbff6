# A room of the program: one folder of src/ with the library that is built from it.
#
#     korvel_room(NAME SOURCES FILE... [USES LIBRARY...] [USES_INSIDE LIBRARY...])
#
# USES are the rooms and packages that its headers need, USES_INSIDE those of its sources alone.
# Rooms use rooms of lower floors only; src/CMakeLists.txt lists them from the ground up.
function(korvel_room name)
    cmake_parse_arguments(ROOM "" "REPORTED_AS" "SOURCES;USES;USES_INSIDE" ${ARGN})
    add_library(korvel_${name} STATIC ${ROOM_SOURCES})
    target_include_directories(korvel_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_compile_features(korvel_${name} PUBLIC cxx_std_20)
    target_link_libraries(korvel_${name}
        PUBLIC ${ROOM_USES} PRIVATE ${ROOM_USES_INSIDE} korvel_options)
    # Reports of broken invariants name files by their place in the tree; those of the classic
    # engine name them as src/UNIT, whatever room the unit is in, as scripts may look for that.
    if(ROOM_REPORTED_AS)
        target_compile_options(korvel_${name} PRIVATE
            -fmacro-prefix-map=${CMAKE_CURRENT_SOURCE_DIR}/=${ROOM_REPORTED_AS})
    else()
        target_compile_options(korvel_${name} PRIVATE
            -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
    endif()
endfunction()

# For rooms on the hot path of the classic search, which goes through small functions of many
# sources.
function(korvel_optimize_across_sources)
    check_ipo_supported(RESULT supported LANGUAGES CXX)
    if(supported)
        set_property(TARGET ${ARGN} PROPERTY INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)
    endif()
endfunction()
