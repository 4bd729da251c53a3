package zorsuite;

/** The kinds of worker, in the order of the C interface. */
public enum ZorWorker {
  /** Version 5 broadcast sender. */
  BROADCAST,
  /** Version 5 multicast or version 3 sender. */
  MULTICAST,
  /** Listener for announcements. */
  LISTENER,
  /** Search for modules. */
  SEARCH,
  /** Firmware upgrade. */
  UPGRADE
}
