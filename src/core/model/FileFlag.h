#pragma once

// The user's mark on a file while culling: kept (flagged), thrown out (rejected) or neither.
enum class FileFlag { none, flagged, rejected };
