package zorsuite;

/**
 * Hears of modules, on the executor, one call at a time. What it throws is dropped, with a line in the
 * library's log.
 */
public interface ZorSuiteListener {
  /**
   * A module announced that it has joined the network. That does not prove that the present run was heard: a
   * module may repeat the announcement of an earlier run, and any host can send one.
   */
  default void onSmartFound(ZorModule module) {}

  /** A module answered a search. */
  default void onSearchFound(ZorModule module) {}
}
