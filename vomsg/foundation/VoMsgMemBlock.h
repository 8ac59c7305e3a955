// The record of one memory block that a memory resource hands to its writers.
#pragma once

struct VoMsgMemBlock {
  char* data = nullptr;
  unsigned length = 0;    // bytes of content
  unsigned capacity = 0;  // bytes of the heap block behind `data`; 0 when the block is not the record's own
  bool owned = false;     // the block came from malloc and belongs to the record's resource
};
