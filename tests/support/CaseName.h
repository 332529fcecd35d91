// Names a parameterized test after its parameter's `name`.
#pragma once

namespace tarnwick::test {

inline constexpr auto caseName = [](const auto& tested) { return tested.param.name; };

} // namespace tarnwick::test
