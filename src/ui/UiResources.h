#pragma once

// The pictures of the program (":/images/..."). They live in a static library, whose resource
// object the linker would drop unless something asks for it: every user calls this first.
void InitUiResources();
