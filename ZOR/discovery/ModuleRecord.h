#pragma once

/// What distinguishes one reported module from another; all four texts together are the key.
struct ZorModuleRecord {
  char mac[20];
  char ip[20];
  char ver[20];
  char cap[64];
};
