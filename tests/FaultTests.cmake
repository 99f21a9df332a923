# SPDX-License-Identifier: MIT
#
# Tests in which memory, storage, processes and threads do their worst.

vornjsondb_add_test(test_failing_allocations test_failing_allocations.cpp failing_allocators.cpp)
vornjsondb_add_test(test_failing_storage test_failing_storage.cpp faulty_vfs.cpp)
vornjsondb_add_test(test_killed_writers test_killed_writers.cpp child_process.cpp faulty_vfs.cpp SLOW)
vornjsondb_add_test(test_lock_moments test_lock_moments.cpp)
vornjsondb_add_test(test_contention test_contention.cpp child_process.cpp faulty_vfs.cpp SLOW)
vornjsondb_add_test(test_threads test_threads.cpp)
vornjsondb_add_test(test_fetch_memory test_fetch_memory.cpp failing_allocators.cpp)
vornjsondb_add_test(test_long_life test_long_life.cpp failing_allocators.cpp SLOW)
