# Fails unless the shared library LIBRARY has a versioned SONAME and exports only the public
# interface: names of the library's classes (Qz...), its functions and records (qz..., QZ...)
# and operators on them. Instantiations of standard templates, which the compiler makes weak
# and visible, are let through.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND objdump -p ${LIBRARY} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
if(NOT headers MATCHES "SONAME +libqzxml\\.so\\.[0-9]+\n")
    message(FATAL_ERROR "${LIBRARY} has no versioned SONAME")
endif()
execute_process(COMMAND nm -D -C --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols
    COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" symbols "${symbols}")
set(strays)
foreach(line IN LISTS symbols)
    # "address type name": keep the name.
    string(REGEX REPLACE "^[0-9a-f]+ [A-Za-z] " "" name "${line}")
    if(name MATCHES "^(std::|void std::|__gnu_cxx::|typeinfo (name )?for std::|guard variable for std::)")
        continue()
    endif()
    if(NOT name MATCHES "(^|[ :(<])(Qz|qz|QZ)|^operator|^throwBoundsErr\\(")
        list(APPEND strays "${name}")
    endif()
endforeach()
if(strays)
    list(JOIN strays "\n  " text)
    message(FATAL_ERROR "exported but not public:\n  ${text}")
endif()
