# The compiler settings every library, program and test of Curatool is built with, as one target
# that each of them links privately.
option(CURATOOL_WERROR "Treat compiler warnings as errors" OFF)
option(CURATOOL_SANITIZE "Build everything with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)

add_library(curatool_build_options INTERFACE)
target_compile_options(curatool_build_options INTERFACE
    -Wall -Wextra -Wno-unused-parameter
    -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wsuggest-override
    # GCC 12 at -O3 reports overlapping copies inside std::string's operator+ (its bug 105651).
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    $<$<BOOL:${CURATOOL_WERROR}>:-Werror>)

if(CURATOOL_SANITIZE)
  # Everything, Qt's generated code and the test programs included, so no frame goes unchecked.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  # What every test runs with, so that a plain ctest is the whole check: the test main compiles
  # them in as the runtimes' defaults and hands them on to the programs a test starts; tests that
  # are scripts or programs of their own get CURATOOL_SANITIZER_ENVIRONMENT from CTest. A failing
  # allocation must come back as null, as it does without the sanitizer (string formatting relies
  # on it), and the cap keeps that test from taking gigabytes of a shared machine first. The leak
  # checker keeps quiet about the suppressions it used: tests compare a program's stderr exactly.
  set(CURATOOL_ASAN_OPTIONS "detect_leaks=1:allocator_may_return_null=1:max_allocation_size_mb=1024")
  set(CURATOOL_UBSAN_OPTIONS "print_stacktrace=1")
  set(CURATOOL_LSAN_OPTIONS "suppressions=${CMAKE_SOURCE_DIR}/tests/support/data/lsan.supp:print_suppressions=0")
  set(CURATOOL_SANITIZER_ENVIRONMENT "ASAN_OPTIONS=${CURATOOL_ASAN_OPTIONS}"
      "UBSAN_OPTIONS=${CURATOOL_UBSAN_OPTIONS}" "LSAN_OPTIONS=${CURATOOL_LSAN_OPTIONS}")
endif()

# The product's own code says how every text is encoded: no implicit conversion between QString
# and 8-bit text, and nothing Qt deprecated before the oldest Qt we ship on (6.4, Debian 12). The
# libraries under src/ and the program link this; the test programs do not yet, because their many
# QString literals are plain ASCII fixtures that gain nothing from being spelled out.
add_library(curatool_qt_strings INTERFACE)
target_compile_definitions(curatool_qt_strings INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_DISABLE_DEPRECATED_BEFORE=0x060400)
