# SPDX-License-Identifier: GPL-3.0-or-later
# The Qt 6 build of QScintilla as the target QScintilla::QScintilla; it ships no CMake package of its own.
find_package(Qt6 REQUIRED COMPONENTS Widgets PrintSupport)
find_library(QSCINTILLA_LIBRARY NAMES qscintilla2_qt6 REQUIRED)
find_path(QSCINTILLA_INCLUDE_DIR NAMES Qsci/qsciscintilla.h PATH_SUFFIXES qt6 x86_64-linux-gnu/qt6
          HINTS ${Qt6Core_INCLUDE_DIRS} REQUIRED)
add_library(QScintilla::QScintilla UNKNOWN IMPORTED)
set_target_properties(QScintilla::QScintilla PROPERTIES
    IMPORTED_LOCATION "${QSCINTILLA_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${QSCINTILLA_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES "Qt6::Widgets;Qt6::PrintSupport")
