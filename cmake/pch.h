#pragma once
#include <QtCore/QtCore>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>
