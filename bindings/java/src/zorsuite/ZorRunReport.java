package zorsuite;

/** What the latest smart configuration run and the latest listener for announcements have done. */
public final class ZorRunReport {
  static final int NUMBERS = 2 * ZorSenderReport.NUMBERS + ZorListenerReport.NUMBERS;

  /** Version 5 multicast, or version 3. */
  public final ZorSenderReport multicast;

  /** Version 5 broadcast. */
  public final ZorSenderReport broadcast;

  /** The listener for announcements, whether it is the run's or not. */
  public final ZorListenerReport listener;

  ZorRunReport(Numbers numbers) {
    multicast = new ZorSenderReport(numbers);
    broadcast = new ZorSenderReport(numbers);
    listener = new ZorListenerReport(numbers);
  }
}
