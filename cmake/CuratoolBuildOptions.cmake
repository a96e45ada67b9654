# The compiler settings every library, program and test of Curatool is built with, as one target
# that each of them links privately.
option(CURATOOL_WERROR "Treat compiler warnings as errors" OFF)
option(CURATOOL_SANITIZE "Build everything with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)

add_library(curatool_build_options INTERFACE)
target_compile_options(curatool_build_options INTERFACE
    -Wall -Wextra -Wno-unused-parameter
    -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wsuggest-override
    $<$<BOOL:${CURATOOL_WERROR}>:-Werror>)

if(CURATOOL_SANITIZE)
  # Everything, Qt's generated code and the test programs included, so no frame goes unchecked.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# The product's own code says how every text is encoded: no implicit conversion between QString
# and 8-bit text, and nothing Qt deprecated before the oldest Qt we ship on (6.4, Debian 12). The
# libraries under src/ and the program link this; the test programs do not yet, because their many
# QString literals are plain ASCII fixtures that gain nothing from being spelled out.
add_library(curatool_qt_strings INTERFACE)
target_compile_definitions(curatool_qt_strings INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_DISABLE_DEPRECATED_BEFORE=0x060400)
