# Finds QtCore of the wanted major version and offers it as tanek_vs_qt, its headers as system headers.

add_library(tanek_vs_qt INTERFACE)
if(TANEK_VS_QT EQUAL 4)
  find_package(Qt4 4.8 REQUIRED COMPONENTS QtCore) # found through QT_QMAKE_EXECUTABLE
  set(TANEK_VS_QT_TARGET Qt4::QtCore)
  set(TANEK_VS_QT_PKGCONFIG QtCore)
elseif(TANEK_VS_QT EQUAL 5 OR TANEK_VS_QT EQUAL 6)
  find_package(Qt${TANEK_VS_QT} REQUIRED COMPONENTS Core)
  set(TANEK_VS_QT_TARGET Qt${TANEK_VS_QT}::Core)
  set(TANEK_VS_QT_PKGCONFIG Qt${TANEK_VS_QT}Core)
else()
  message(FATAL_ERROR "TANEK_VS_QT is \"${TANEK_VS_QT}\"; it must be 4, 5 or 6")
endif()
target_link_libraries(tanek_vs_qt INTERFACE ${TANEK_VS_QT_TARGET})
