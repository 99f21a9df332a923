# SPDX-License-Identifier: MIT
#
# Tests in which memory, storage, processes and threads do their worst.

vornjsondb_add_test(test_failing_allocations test_failing_allocations.cpp failing_allocators.cpp)
vornjsondb_add_test(test_failing_storage test_failing_storage.cpp faulty_vfs.cpp)
