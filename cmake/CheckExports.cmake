# Fails unless the shared library LIBRARY has a versioned SONAME and exports only the public
# interface: names of the library's classes (Qz...), its functions and records (qz..., QZ...)
# and operators on them. Instantiations of standard templates, which the compiler makes weak
# and visible, are let through.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND objdump -p ${LIBRARY} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
if(NOT headers MATCHES "SONAME +libqzxml\\.so\\.[0-9]+\n")
    message(FATAL_ERROR "${LIBRARY} has no versioned SONAME")
endif()
# Mangled names, so that a standard template's instantiation is told by its prefix.
execute_process(COMMAND nm -D --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols
    COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" symbols "${symbols}")
set(strays)
foreach(line IN LISTS symbols)
    # "address type name": keep the name.
    string(REGEX REPLACE "^[0-9a-f]+ [A-Za-z] " "" name "${line}")
    # std::, its abbreviations (std::allocator, std::string, ...) and __gnu_cxx::, also as the
    # vtable, typeinfo, guard or local static of one; and the typeinfo of function types that
    # UndefinedBehaviorSanitizer's function check emits.
    if(name MATCHES "^_Z(T[VIS]|GV|Z)?N?[KVr]*(St|S[abdiost]|9__gnu_cxx)|^_ZT[IS]F")
        continue()
    endif()
    if(NOT name MATCHES "Qz|qz|QZ|throwBoundsErr")
        list(APPEND strays "${name}")
    endif()
endforeach()
if(strays)
    list(JOIN strays "\n  " text)
    message(FATAL_ERROR "exported but not public:\n  ${text}")
endif()
