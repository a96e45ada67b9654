# Writes the manual page from the program's own usage text, so the two never drift apart.
# cmake -DBINARY=<curatool> -DOUTPUT=<curatool.1> -DSCRATCH=<folder> -DVERSION=<x.y.z> -P make-manpage.cmake
foreach(variable BINARY OUTPUT SCRATCH VERSION)
  if(NOT DEFINED ${variable})
    message(FATAL_ERROR "make-manpage.cmake: ${variable} is not set")
  endif()
endforeach()

# The usage run touches nothing of the building user: its home, settings and root are scratch.
file(REMOVE_RECURSE "${SCRATCH}")
file(MAKE_DIRECTORY "${SCRATCH}/home" "${SCRATCH}/tmp" "${SCRATCH}/root")
set(ENV{HOME} "${SCRATCH}/home")
set(ENV{XDG_CONFIG_HOME} "${SCRATCH}/home/.config")
set(ENV{TMPDIR} "${SCRATCH}/tmp")
set(ENV{CURATOOL_ROOT} "${SCRATCH}/root")
set(ENV{QT_QPA_PLATFORM} "offscreen")
execute_process(COMMAND "${BINARY}" --help OUTPUT_VARIABLE usage RESULT_VARIABLE status)
file(REMOVE_RECURSE "${SCRATCH}")
if(NOT status EQUAL 154 OR usage STREQUAL "")
  message(FATAL_ERROR "curatool --help ended with ${status}")
endif()

# roff: backslashes and minus signs escaped, no line may start with a control character.
string(REPLACE "\\" "\\e" usage "${usage}")
string(REPLACE "-" "\\-" usage "${usage}")
string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" usage "${usage}")
string(STRIP "${usage}" usage)

file(WRITE "${OUTPUT}" ".TH CURATOOL 1 \"\" \"Curatool ${VERSION}\" \"User Commands\"
.SH NAME
curatool \\- set up, update and remove Gallery content collections
.SH SYNOPSIS
.B curatool
[\\fIoptions\\fR] [\\fIcollection.gallerycollection\\fR]
.SH DESCRIPTION
.B curatool
compares what a Gallery source (a disc, a local folder or a plain HTTP server) offers with what is
installed, lets the user choose, and carries out the change. Started without an action it opens its
windows; the actions below run unattended from the command line and need no display.
.SH OPTIONS
The usage text, as
.B curatool \\-\\-help
prints it:
.PP
.nf
${usage}
.fi
.SH EXIT STATUS
0 when the run succeeded or the user cancelled, 1 when it failed before it began, 154 after the
usage text.
.SH ENVIRONMENT
.TP
.B CURATOOL_ROOT
moves every fixed absolute location (the shared galleries folder, the system settings folder, the
update marker) below this folder.
.SH FILES
.TP
.I share/CuratoolId.xml
beside the program's folder: the installed version and where newer versions are announced.
.TP
.I Languages/<language>/CuratoolId.qm
below the program's folder: the translation of its texts.
")
