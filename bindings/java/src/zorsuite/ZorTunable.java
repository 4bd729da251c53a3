package zorsuite;

/**
 * The process-wide numbers that pace the workers, in the order of the C interface. Intervals are
 * milliseconds, 0 or less for none; a length base of 0 switches its channel off at a start.
 */
public enum ZorTunable {
  /** Multicast length base, bytes. */
  MC_LENGTH,
  /** Multicast wait after each datagram. */
  MC_CHAR_INTERVAL,
  /** Multicast wait after each cycle. */
  MC_LOOP_INTERVAL,
  /** Multicast wait after each block. */
  MC_BLOCK_INTERVAL,
  /** Multicast sync datagrams per cycle. */
  MC_TAG_REPEAT,
  /** Multicast data parts per cycle. */
  MC_DATA_REPEAT,
  /** Multicast cycles per block. */
  MC_LOOP_REPEAT,
  /** Broadcast length base, bytes. */
  BC_LENGTH,
  /** Broadcast wait after each datagram. */
  BC_CHAR_INTERVAL,
  /** Broadcast wait after each cycle. */
  BC_LOOP_INTERVAL,
  /** Broadcast wait after each block. */
  BC_BLOCK_INTERVAL,
  /** Broadcast repeats per sync datagram. */
  BC_TAG_REPEAT,
  /** Broadcast repeats per data datagram. */
  BC_DATA_REPEAT,
  /** Broadcast cycles per block. */
  BC_LOOP_REPEAT,
  /** Requests of a search. */
  SEARCH_COUNT,
  /** Milliseconds between requests. */
  SEARCH_INTERVAL
}
