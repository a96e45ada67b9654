# Where `cmake --install` and the package put the program. The program finds its catalogues in
# <its folder>/Languages and its update document in <its folder>/../share, so both travel with it.
# By default it lives in a folder of its own below lib/ (a subfolder of bin/ would break the
# file-system standard), and bin/curatool is a link to it. An empty CURATOOL_INSTALL_APPDIR puts
# it straight into the prefix's bin/ and share/, for a prefix of its own such as /opt/curatool.
set(CURATOOL_INSTALL_APPDIR "lib/curatool" CACHE STRING
    "Folder below the install prefix holding the program's bin/ and share/; empty: the prefix itself")
if(CURATOOL_INSTALL_APPDIR)
  set(CURATOOL_INSTALL_BINDIR "${CURATOOL_INSTALL_APPDIR}/bin")
  set(CURATOOL_INSTALL_SHAREDIR "${CURATOOL_INSTALL_APPDIR}/share")
else()
  set(CURATOOL_INSTALL_BINDIR "bin")
  set(CURATOOL_INSTALL_SHAREDIR "share")
endif()
