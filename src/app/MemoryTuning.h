#pragma once

namespace quillon {

// Keeps freed heap memory in the process for reuse instead of handing it
// back to the system after every large free. A run parses and serialises a
// definition of up to megabytes per task; with the allocator's defaults each
// task's memory went back to the system and was faulted in again (zeroed
// page by page) by the next task, which cost more than the parse itself.
// Call once, first thing in main().
void keepFreedMemoryForReuse();

} // namespace quillon
