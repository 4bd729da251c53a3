import java.util.concurrent.BlockingQueue;
import java.util.concurrent.LinkedBlockingQueue;
import java.util.concurrent.TimeUnit;
import zorsuite.ZorModule;
import zorsuite.ZorSuite;
import zorsuite.ZorSuiteListener;

/** Provisions one module and says who it is. Usage: java Provision SSID PASSPHRASE [SECONDS] */
public final class Provision {
  private static final BlockingQueue<ZorModule> FOUND = new LinkedBlockingQueue<>();

  private static final class Finder implements ZorSuiteListener {
    @Override
    public void onSmartFound(ZorModule module) {
      FOUND.add(module);
    }
  }

  public static void main(String[] arguments) throws InterruptedException {
    if (arguments.length < 2) {
      System.err.println("usage: java Provision SSID PASSPHRASE [SECONDS]");
      System.exit(2);
    }
    final int seconds = arguments.length > 2 ? Integer.parseInt(arguments[2]) : 60;
    final ZorModule module;
    try (ZorSuite suite = new ZorSuite()) {
      suite.setListener(new Finder());
      suite.smartConfigOnlineListen(ZorSuite.ANNOUNCEMENT_PORT);
      suite.smartConfigV5Start(arguments[0], arguments[1], seconds * 1000);
      module = FOUND.poll(seconds, TimeUnit.SECONDS);
      suite.smartConfigStop();
    }
    if (module == null) System.exit(1);
    // Both texts come from the network: a real program escapes them before it shows them.
    System.out.println("found " + module.getId() + " at " + module.getIp());
  }

  private Provision() {}
}
