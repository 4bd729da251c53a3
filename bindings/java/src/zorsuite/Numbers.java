package zorsuite;

/** Reads the numbers of a report, in the order in which the native side stores them. */
final class Numbers {
  private final long[] numbers;
  private int next;

  Numbers(long[] numbers) { this.numbers = numbers; }

  long take() { return numbers[next++]; }

  int takeInt() { return (int) take(); }

  ZorWorkerState takeState() { return ZorWorkerState.values()[takeInt()]; }
}
