find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui Widgets Qml Quick Network DBus Svg Concurrent)
find_package(QCoro6 REQUIRED COMPONENTS Core DBus)
