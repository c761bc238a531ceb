# Common compile settings for every target of the project. Product code may not turn C strings
# into QString implicitly (the encoding must be chosen); tests pass TESTS to allow it in tables.
function(lumo_target_settings target)
    cmake_parse_arguments(S "TESTS" "" "" ${ARGN})
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
    if(LUMO_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS
                                                 QT_NO_NARROWING_CONVERSIONS_IN_CONNECT)
    if(NOT S_TESTS)
        target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII)
    endif()
endfunction()

if(LUMO_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer
                        -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()
if(LUMO_TSAN)
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
endif()

# lumo_add_test(NAME name SOURCES ... LIBS ... LABELS ... [ENVIRONMENT VAR=value ...]): one QtTest
# executable, one CTest test.
function(lumo_add_test)
    cmake_parse_arguments(T "" "NAME;TIMEOUT" "SOURCES;LIBS;LABELS;ENVIRONMENT" ${ARGN})
    add_executable(${T_NAME} ${T_SOURCES})
    lumo_target_settings(${T_NAME} TESTS)
    target_link_libraries(${T_NAME} PRIVATE Qt6::Test ${T_LIBS})
    target_compile_definitions(${T_NAME} PRIVATE
        LUMO_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
        LUMO_CORPUS_DIR="${PROJECT_SOURCE_DIR}/../shared/corpus")
    add_test(NAME ${T_NAME} COMMAND ${T_NAME})
    if(NOT T_TIMEOUT)
        set(T_TIMEOUT 300)
    endif()
    set_tests_properties(${T_NAME} PROPERTIES LABELS "${T_LABELS}" TIMEOUT ${T_TIMEOUT})
    if(T_ENVIRONMENT)
        set_tests_properties(${T_NAME} PROPERTIES ENVIRONMENT "${T_ENVIRONMENT}")
    endif()
endfunction()
