set(CMAKE_SYSTEM_PROCESSOR i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw.cmake)
# Every processor that runs Windows 10 has SSE2. Without it, numbers would be compared with more digits than they are
# stored with, and 0.1 would not equal a stored 0.1.
string(APPEND CMAKE_CXX_FLAGS_INIT " -msse2 -mfpmath=sse")
