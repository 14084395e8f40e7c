# Fails unless LIBRARY exports exactly the six functions and needs nothing but the C++ library, threads and C.
set(wanted
    ORVA_FireDetection_Init
    ORVA_FireDetection_SetFrame
    ORVA_FireDetection_SetSensitiveGrade
    ORVA_FireDetection_Start
    ORVA_FireDetection_Stop
    ORVA_FireDetection_UnInit)

execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
string(STRIP "${text}" text)
string(REPLACE "\n" ";" lines "${text}")
set(exported)
foreach(line IN LISTS lines)
    string(REGEX REPLACE "^.* " "" symbol "${line}")
    list(APPEND exported ${symbol})
endforeach()
list(SORT exported)
if(NOT exported STREQUAL wanted)
    message(FATAL_ERROR "exported: ${exported}\nwanted: ${wanted}")
endif()

if(NOT SANITIZE)
    execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "NEEDED +[^\n]+" needed "${text}")
    foreach(line IN LISTS needed)
        if(NOT line MATCHES " (libstdc\\+\\+|libm|libgcc_s|libpthread|libc|ld-linux[^.]*|libc\\+\\+|libc\\+\\+abi)\\.so")
            message(FATAL_ERROR "unexpected dependency: ${line}")
        endif()
    endforeach()
endif()
