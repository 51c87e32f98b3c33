# Runs PROGRAM (with the |-separated ARGS, in WORKING_DIRECTORY if given) and fails unless it
# exits with STATUS (0 if not given) and its standard output is exactly the expected text: the file EXPECTED, or the
# fenced block that follows the line "<!-- output: NAME -->" in the Markdown file GUIDE (NAME
# is SOURCE's file name when SOURCE is given). With GUIDE and SOURCE, the fenced block after
# "<!-- snippet: NAME -->" must also be exactly the file SOURCE, so that what the guide shows
# is what was compiled and run. With UPDATE=ON the two
# blocks are rewritten instead of checked.
cmake_minimum_required(VERSION 3.25)

# Where the body of the first fenced block after the marker line starts in text, and its
# length (up to and including its last line feed).
function(find_block text marker start_var length_var)
    string(FIND "${text}" "<!-- ${marker} -->\n" at)
    if(at EQUAL -1)
        message(FATAL_ERROR "no '<!-- ${marker} -->' in ${GUIDE}")
    endif()
    string(SUBSTRING "${text}" ${at} -1 rest)
    string(FIND "${rest}" "```" open)
    string(SUBSTRING "${rest}" ${open} -1 rest)
    string(FIND "${rest}" "\n" newline)
    math(EXPR start "${at} + ${open} + ${newline} + 1")
    string(SUBSTRING "${text}" ${start} -1 rest)
    string(FIND "\n${rest}" "\n```" close)
    set(${start_var} ${start} PARENT_SCOPE)
    set(${length_var} ${close} PARENT_SCOPE)
endfunction()

function(block_of text marker out)
    find_block("${text}" "${marker}" start length)
    string(SUBSTRING "${text}" ${start} ${length} block)
    set(${out} "${block}" PARENT_SCOPE)
endfunction()

# text with the block after marker replaced by body.
function(replace_block text marker body out)
    find_block("${text}" "${marker}" start length)
    string(SUBSTRING "${text}" 0 ${start} before)
    math(EXPR after "${start} + ${length}")
    string(SUBSTRING "${text}" ${after} -1 rest)
    set(${out} "${before}${body}${rest}" PARENT_SCOPE)
endfunction()

function(require_same what expected actual)
    if(NOT expected STREQUAL actual)
        get_filename_component(stem ${PROGRAM} NAME)
        set(files ${CMAKE_CURRENT_BINARY_DIR}/${stem}.expected ${CMAKE_CURRENT_BINARY_DIR}/${stem}.actual)
        list(GET files 0 expected_file)
        list(GET files 1 actual_file)
        file(WRITE ${expected_file} "${expected}")
        file(WRITE ${actual_file} "${actual}")
        execute_process(COMMAND diff -u ${files})
        message(FATAL_ERROR "${what} differs (- expected, + actual)")
    endif()
endfunction()

string(REPLACE "|" ";" ARGS "${ARGS}")
if(NOT WORKING_DIRECTORY)
    set(WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
endif()
execute_process(COMMAND ${PROGRAM} ${ARGS} WORKING_DIRECTORY ${WORKING_DIRECTORY}
    OUTPUT_VARIABLE actual RESULT_VARIABLE status)
if(NOT STATUS)
    set(STATUS 0)
endif()
if(NOT status EQUAL STATUS)
    message(FATAL_ERROR "${PROGRAM} exited with ${status}, not ${STATUS}")
endif()

if(GUIDE)
    file(READ ${GUIDE} guide)
    # A program shows its source as well; a command (such as the tool) only its output.
    if(SOURCE)
        get_filename_component(name ${SOURCE} NAME)
        file(READ ${SOURCE} source)
    else()
        set(name ${NAME})
    endif()
    if(UPDATE)
        if(SOURCE)
            replace_block("${guide}" "snippet: ${name}" "${source}" guide)
        endif()
        replace_block("${guide}" "output: ${name}" "${actual}" guide)
        file(WRITE ${GUIDE} "${guide}")
        return()
    endif()
    if(SOURCE)
        block_of("${guide}" "snippet: ${name}" shown)
        require_same("the guide's copy of ${name} (- guide, + source)" "${shown}" "${source}")
    endif()
    block_of("${guide}" "output: ${name}" expected)
else()
    file(READ ${EXPECTED} expected)
endif()
require_same("the output of ${PROGRAM}" "${expected}" "${actual}")
