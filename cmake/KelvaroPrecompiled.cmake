# Precompiled headers: most of the time a source takes goes into reading the same library headers
# again. Four sets are compiled once each, and every library and program of ours uses the one that
# fits what it links. Only libraries' headers are in them, so that no change of ours rebuilds all.
# gcc builds without, which shows a source that forgets an include.

option(KELVARO_PRECOMPILED "Precompile the libraries' headers (clang only)" ON)
if(NOT KELVARO_PRECOMPILED OR NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    return()
endif()

set(kelvaro_headers_plain <algorithm> <array> <atomic> <chrono> <cmath> <condition_variable>
    <cstdint> <cstring> <filesystem> <functional> <map> <memory> <mutex> <optional> <set> <span>
    <string> <string_view> <thread> <unordered_map> <utility> <variant> <vector> <fmt/format.h>)
set(kelvaro_headers_test ${kelvaro_headers_plain} <fstream> <random> <sstream> <gmock/gmock.h>
    <gtest/gtest.h>)
set(kelvaro_headers_window ${kelvaro_headers_plain} <QAbstractItemModel> <QAccessible>
    <QApplication> <QBoxLayout> <QDateTime> <QFileDialog> <QGridLayout> <QImage> <QKeyEvent>
    <QLabel> <QLineEdit> <QListView> <QMenu> <QMouseEvent> <QPainter> <QPainterPath> <QPointer>
    <QPropertyAnimation> <QPushButton> <QScrollArea> <QScrollBar> <QSettings> <QShortcut>
    <QSlider> <QStyle> <QStyledItemDelegate> <QTimer> <QToolButton> <QToolTip> <QTreeView>
    <QWidget>)
set(kelvaro_headers_window_test ${kelvaro_headers_window} <fstream> <gmock/gmock.h>
    <gtest/gtest.h>)

function(kelvaro_precompiled_set name)
    file(WRITE ${CMAKE_BINARY_DIR}/precompiled/${name}.cpp "")
    add_library(precompiled_${name} OBJECT ${CMAKE_BINARY_DIR}/precompiled/${name}.cpp)
    target_link_libraries(precompiled_${name} PRIVATE kelvaro_options fmt::fmt ${ARGN})
    # Without its time of making, the same headers give the same file, and ccache works.
    target_compile_options(precompiled_${name} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    target_precompile_headers(precompiled_${name} PRIVATE ${kelvaro_headers_${name}})
endfunction()

kelvaro_precompiled_set(plain)
kelvaro_precompiled_set(window Qt6::Widgets)
# Qt's short names for signals and slots are macros that would collide with ours.
target_compile_definitions(precompiled_window PRIVATE QT_NO_KEYWORDS)
if(KELVARO_TESTS)
    kelvaro_precompiled_set(test GTest::gtest GTest::gmock)
    kelvaro_precompiled_set(window_test GTest::gtest GTest::gmock Qt6::Widgets)
    target_compile_definitions(precompiled_window_test PRIVATE QT_NO_KEYWORDS)
endif()

function(kelvaro_precompile_below folder)
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(NOT type MATCHES "STATIC_LIBRARY|EXECUTABLE")
            continue()
        endif()
        get_target_property(linked ${target} LINK_LIBRARIES)
        set(fitting plain)
        if(linked MATCHES "kelvaro_ui|profile_scene|Qt6::Widgets")
            set(fitting window)
            if(linked MATCHES "gtest|profile_scene")
                set(fitting window_test)
            endif()
        elseif(linked MATCHES "gtest")
            set(fitting test)
        endif()
        target_precompile_headers(${target} REUSE_FROM precompiled_${fitting})
        # A program's sources must be positioned as the headers were.
        target_compile_options(${target} PRIVATE -fPIC "SHELL:-Xclang -fno-pch-timestamp")
    endforeach()
    get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
    foreach(inner IN LISTS folders)
        kelvaro_precompile_below(${inner})
    endforeach()
endfunction()

foreach(folder src tests bench tools)
    if(folder STREQUAL "tests" AND NOT KELVARO_TESTS OR folder STREQUAL "bench" AND NOT KELVARO_BENCH)
        continue()
    endif()
    kelvaro_precompile_below(${CMAKE_SOURCE_DIR}/${folder})
endforeach()
