# The project's own sample objects: samples/*.dump, made into DICOM files in KIVDS_SAMPLES_DIR by the target `samples`.
# A template gives the three slices of a series. Only the tests and scripts/demo need them, so where DCMTK's programs are
# missing there is no such target.
find_program(DUMP2DCM dump2dcm)
find_program(DCMCONV dcmconv)
if(NOT DUMP2DCM OR NOT DCMCONV)
    message(STATUS "No samples: they need dump2dcm and dcmconv")
    return()
endif()
set(KIVDS_SAMPLES_DIR "${PROJECT_BINARY_DIR}/samples")
file(MAKE_DIRECTORY "${KIVDS_SAMPLES_DIR}/ct_series")

# Adds the sample `name` (.dcm), made of the text `dump` with dump2dcm's options `ARGN`.
function(kivds_add_sample name dump)
    set(file "${KIVDS_SAMPLES_DIR}/${name}.dcm")
    add_custom_command(OUTPUT "${file}" DEPENDS "${dump}" VERBATIM
        COMMAND "${DUMP2DCM}" ${ARGN} "${dump}" "${file}")
    set_property(GLOBAL APPEND PROPERTY KIVDS_SAMPLES "${file}")
endfunction()

set(dumps "${PROJECT_SOURCE_DIR}/samples")
kivds_add_sample(dose_grid "${dumps}/dose_grid.dump" --write-xfer-implicit)
kivds_add_sample(enhanced_ct "${dumps}/enhanced_ct.dump" --write-xfer-little)
kivds_add_sample(report "${dumps}/report.dump" --write-xfer-little --length-undefined)
kivds_add_sample(rt_structures "${dumps}/rt_structures.dump" --write-xfer-deflated)

add_custom_command(OUTPUT "${KIVDS_SAMPLES_DIR}/greek_name.dcm" DEPENDS "${dumps}/greek_name.dump" VERBATIM
    COMMAND "${DUMP2DCM}" --write-xfer-little "${dumps}/greek_name.dump" "${KIVDS_SAMPLES_DIR}/greek_name.dcm"
    COMMAND "${DCMCONV}" --convert-to-charset "ISO_IR 126"
        "${KIVDS_SAMPLES_DIR}/greek_name.dcm" "${KIVDS_SAMPLES_DIR}/greek_name.dcm")
set_property(GLOBAL APPEND PROPERTY KIVDS_SAMPLES "${KIVDS_SAMPLES_DIR}/greek_name.dcm")

set(slice_uids
    2.25.267907362069168142013347949660882893251
    2.25.58048772092281250312819876152584414409090
    2.25.319676264308285634872475091897117883077)
set(slice_z -5.0 0.0 5.0)
set(slice_times 101905.500 101906.000 101906.500)
foreach(SLICE 1 2 3)
    math(EXPR i "${SLICE} - 1")
    list(GET slice_uids ${i} SOP_INSTANCE)
    list(GET slice_z ${i} Z)
    list(GET slice_times ${i} TIME)
    set(dump "${PROJECT_BINARY_DIR}/ct_slice_${SLICE}.dump") # not among the samples, which the tool reads as a folder
    configure_file("${dumps}/ct_slice.dump.in" "${dump}" @ONLY)
    kivds_add_sample(ct_series/${SLICE} "${dump}" --write-xfer-little)
endforeach()

get_property(samples GLOBAL PROPERTY KIVDS_SAMPLES)
add_custom_target(samples ALL DEPENDS ${samples})
