package tests;

import static java.nio.charset.StandardCharsets.ISO_8859_1;
import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNotNull;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.BufferedReader;
import java.io.File;
import java.io.InputStreamReader;
import java.lang.management.ManagementFactory;
import java.lang.ref.WeakReference;
import java.net.DatagramPacket;
import java.net.DatagramSocket;
import java.net.InetAddress;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.BlockingQueue;
import java.util.concurrent.Callable;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.LinkedBlockingQueue;
import java.util.concurrent.RejectedExecutionException;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.regex.Matcher;
import java.util.regex.Pattern;
import javax.management.ObjectName;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.Tag;
import org.junit.jupiter.api.Test;
import zorsuite.ZorModule;
import zorsuite.ZorSuite;
import zorsuite.ZorSuiteListener;
import zorsuite.ZorTunable;
import zorsuite.ZorWorker;
import zorsuite.ZorWorkerState;

/** The Java interface, with -Xcheck:jni, in a network namespace of its own. */
final class ZorSuiteTest {
  private static final int EPERM = 1;

  /** Keeps what it hears, and on which thread. */
  private static final class Recorder implements ZorSuiteListener {
    final BlockingQueue<ZorModule> announced = new LinkedBlockingQueue<>();
    final BlockingQueue<ZorModule> searched = new LinkedBlockingQueue<>();
    volatile Thread thread;

    @Override
    public void onSmartFound(ZorModule module) {
      thread = Thread.currentThread();
      announced.add(module);
    }

    @Override
    public void onSearchFound(ZorModule module) {
      searched.add(module);
    }
  }

  private final Recorder recorder = new Recorder();
  private DatagramSocket module;
  private ZorSuite suite;

  @BeforeEach
  void setUp() throws Exception {
    module = new DatagramSocket();
    ZorSuite.setLogSink(line -> {});
    suite = new ZorSuite();
    suite.setListener(recorder);
  }

  @AfterEach
  void endWorkers() {
    try (ZorSuite ender = new ZorSuite()) {
      ender.smartConfigStop();
      ender.smartConfigV5SetProperty(ZorSuite.findPace("default"));
      ender.deviceSearchSetProperty(100, 20);
    }
    for (ZorWorker worker : ZorWorker.values()) ZorSuite.waitFor(worker);
    suite.close();
    module.close();
    ZorSuite.setSocketHook(null);
    ZorSuite.setLogSink(null);
    ZorSuite.setExecutor(null);
  }

  private void announce(String id) throws Exception {
    final byte[] line = ("xcmd_notify:0:mac=" + id + ",ver=1,cap=2,x=\u00ff").getBytes(ISO_8859_1);
    module.send(new DatagramPacket(line, line.length, InetAddress.getLoopbackAddress(), 25010));
  }

  private static ZorModule next(BlockingQueue<ZorModule> queue) throws InterruptedException {
    final ZorModule found = queue.poll(10, TimeUnit.SECONDS);
    assertNotNull(found, "no module was reported");
    return found;
  }

  private static void waitUntil(Callable<Boolean> condition) throws Exception {
    final long limit = System.nanoTime() + TimeUnit.SECONDS.toNanos(10);
    while (!condition.call()) {
      assertTrue(System.nanoTime() < limit, "nothing happened for ten seconds");
      Thread.sleep(1);
    }
  }

  private static String lineWith(BufferedReader lines, String text) throws Exception {
    for (String line = lines.readLine(); line != null; line = lines.readLine()) {
      if (line.contains(text)) return line;
    }
    throw new AssertionError("the module ended without " + text);
  }

  @Test
  void provisionsFindsAndUpgradesTheVirtualModule() throws Exception {
    final byte[] ssid = {'N', (byte) 0xff, (byte) 0xc3, '1'};
    final Process process = new ProcessBuilder(System.getProperty("zorctl"), "module", "--interface", "zor1",
        "--mac", "Java", "--json", "--show-secrets")
                                .redirectError(ProcessBuilder.Redirect.INHERIT)
                                .start();
    try (BufferedReader events = new BufferedReader(new InputStreamReader(process.getInputStream()))) {
      lineWith(events, "module_started");
      final ExecutorService executor = Executors.newSingleThreadExecutor();
      final Thread callbacks = executor.submit(Thread::currentThread).get();
      ZorSuite.setExecutor(executor);
      assertEquals(25011, suite.smartConfigOnlineListen(25011));
      suite.smartConfigV5Append(ZorSuite.makePortRecord(25011));
      suite.smartConfigV5SetProperty(ZorSuite.findPace("fast"));
      suite.smartConfigV5Start(ssid, "pass phr\u00e4se".getBytes("UTF-8"), 20000);
      final ZorModule found = next(recorder.announced);
      assertEquals("Java", found.getId());
      assertEquals("10.77.0.1", found.getIp());
      assertEquals(callbacks, recorder.thread);
      assertTrue(suite.smartConfigReport().multicast.datagrams > 0);
      waitUntil(() -> suite.smartConfigReport().listener.received.reported == 1);
      suite.smartConfigStop();
      final String decoded = lineWith(events, "\"decoded\"");
      assertTrue(decoded.contains("4effc331"), decoded);
      assertTrue(decoded.contains("pass phr\u00e4se") || decoded.contains("pass phr\\u00e4se"), decoded);

      suite.deviceSearchSetProperty(20, 50);
      suite.deviceSearch();
      assertEquals("1.0.0", next(recorder.searched).getVersion());
      ZorSuite.cancel(ZorWorker.SEARCH);
      ZorSuite.waitFor(ZorWorker.SEARCH);
      assertTrue(suite.deviceSearchReport().requestsSent > 0);
      assertEquals(ZorWorkerState.STOPPED, suite.deviceSearchReport().state);

      suite.deviceUpgrade("10.77.0.1", "https://a/b");
      ZorSuite.waitFor(ZorWorker.UPGRADE);
      assertEquals(-111, suite.deviceUpgradeProgress());
      assertEquals(ZorWorkerState.FINISHED, suite.deviceUpgradeReport().state);
      executor.shutdown();
    } finally {
      process.destroy();
      process.waitFor();
    }
  }

  @Test
  void textsKeepTheirBytes() throws Exception {
    final BlockingQueue<String> lines = new LinkedBlockingQueue<>();
    ZorSuite.setLogSink(line -> lines.add(new String(line, ISO_8859_1)));
    suite.smartConfigV5Start(new byte[] {'s', (byte) 0xff}, new byte[0], 0);
    assertTrue(lines.take().contains("ssid=s\u00ff, pass=,"));
    ZorSuite.waitFor(ZorWorker.MULTICAST);
    suite.smartConfigV5Start("\u00e9", "a\0b", 0);
    String line = lines.take();
    assertTrue(line.contains("ssid=\u00c3\u00a9, pass=a,"), line);
    suite.smartConfigOnlineListen(25010);
    announce("\u00e9");
    final ZorModule found = next(recorder.announced);
    assertArrayEquals(new byte[] {(byte) 0xe9}, found.getIdBytes());
    assertArrayEquals(new byte[] {'x', '=', (byte) 0xff}, found.getExtensionBytes());
    assertEquals("\ufffd", found.getId());
    assertEquals("127.0.0.1|1|2", found.getIp() + "|" + found.getVersion() + "|" + found.getCapabilities());
  }

  @Test
  void whatAListenerThrowsDoesNoHarm() throws Exception {
    final BlockingQueue<String> lines = new LinkedBlockingQueue<>();
    ZorSuite.setLogSink(line -> {
      lines.add(new String(line, ISO_8859_1));
      throw new IllegalStateException("the sink's own");
    });
    final AtomicInteger calls = new AtomicInteger();
    suite.setListener(new ZorSuiteListener() {
      @Override
      public void onSmartFound(ZorModule module) {
        if (calls.incrementAndGet() == 1) throw new StackOverflowError("on purpose");
      }
    });
    suite.smartConfigOnlineListen(25010);
    announce("A");
    announce("B");
    waitUntil(() -> calls.get() == 2);
    assertEquals("a listener threw java.lang.StackOverflowError: on purpose", lines.take());
  }

  @Test
  void aCallbackMayCloseItsSuite() throws Exception {
    final AtomicInteger calls = new AtomicInteger();
    suite.setListener(new ZorSuiteListener() {
      @Override
      public void onSmartFound(ZorModule module) {
        calls.incrementAndGet();
        suite.close();
      }
    });
    suite.smartConfigOnlineListen(25010);
    announce("A");
    announce("B");
    waitUntil(() -> calls.get() == 1 && !ZorSuite.isRunning(ZorWorker.UPGRADE));
    assertThrows(IllegalStateException.class, suite::deviceSearch);
    suite.close();
    assertEquals(1, calls.get());
  }

  @Test
  void closingDuringAnOperationIsSafe() throws Exception {
    for (int i = 0; i < 200; ++i) {
      final ZorSuite closing = new ZorSuite();
      final Thread user = new Thread(() -> {
        assertThrows(IllegalStateException.class, () -> {
          for (;;) closing.smartConfigReport();
        });
      });
      user.start();
      closing.close();
      user.join();
    }
  }

  @Test
  void whatTheExecutorRejectsOrLosesIsReportedLaterOrFreed() throws Exception {
    ZorSuite.setExecutor(work -> { throw new RejectedExecutionException(); });
    suite.smartConfigOnlineListen(25010);
    announce("A");
    waitUntil(() -> suite.smartConfigReport().listener.received.dropped == 1);
    ZorSuite.setExecutor(work -> {});
    for (int i = 0; i < 1024; ++i) {
      announce("lost" + i);
      if (i % 100 == 99) Thread.sleep(2);
    }
    // All places are taken until the garbage collector finds what was lost.
    waitUntil(() -> {
      announce("full" + System.nanoTime());
      return suite.smartConfigReport().listener.received.dropped > 1;
    });
    ZorSuite.setExecutor(null);
    waitUntil(() -> {
      System.gc();
      suite.smartConfigProgress(); // Any operation frees what the collector has found.
      announce("A");
      return recorder.announced.stream().anyMatch(found -> found.getId().equals("A"));
    });
  }

  @Test
  void theSocketHookSeesEverySocketAndMayRefuseIt() throws Exception {
    final List<Integer> descriptors = new ArrayList<>();
    ZorSuite.setSocketHook(descriptor -> descriptors.add(descriptor));
    assertEquals(25010, suite.smartConfigOnlineListen(25010));
    assertTrue(descriptors.size() == 1 && new File("/proc/self/fd/" + descriptors.get(0)).exists());

    ZorSuite.setSocketHook(descriptor -> { throw new IllegalStateException("refused"); });
    assertEquals(-1, suite.smartConfigOnlineListen(25010));
    assertEquals(ZorWorkerState.NO_SOCKET, suite.smartConfigReport().listener.state);
    assertEquals(EPERM, suite.smartConfigReport().listener.error.number);
    suite.smartConfigV5Start("s", "p", 1000); // Its workers call the hook on threads of their own.
    ZorSuite.waitFor(ZorWorker.MULTICAST);
    ZorSuite.waitFor(ZorWorker.BROADCAST);
    assertEquals(EPERM, suite.smartConfigReport().multicast.error.number);
    assertTrue(suite.smartConfigStatus() < 0);
    assertFalse(ZorSuite.setInterface("nowhere0"));
  }

  @Test
  void tunablesAndArguments() {
    final byte[] values = new byte[14];
    for (int i = 0; i < values.length; ++i) values[i] = (byte) (200 + i);
    suite.smartConfigV5SetProperty(values);
    suite.deviceSearchSetProperty(215, 214);
    for (ZorTunable tunable : ZorTunable.values()) {
      assertEquals(200 + tunable.ordinal(), ZorSuite.getTunable(tunable), tunable.toString());
    }
    ZorSuite.setTunable(ZorTunable.MC_LENGTH, -1);
    assertEquals(-1, ZorSuite.getTunable(ZorTunable.MC_LENGTH));
    assertNull(ZorSuite.findPace("slow"));
    assertThrows(IllegalArgumentException.class, () -> suite.smartConfigV5SetProperty(new byte[13]));
    assertThrows(IllegalArgumentException.class, () -> ZorSuite.makePortRecord(0));
    assertThrows(NullPointerException.class, () -> suite.smartConfigV5Start((byte[]) null, new byte[0], 1));
    assertTrue(ZorSuite.getLibraryVersion().matches("\\d+\\.\\d+\\.\\d+"));
  }

  /** As the virtual machine counts them. */
  private static int globalReferences() throws Exception {
    final Object dump = ManagementFactory.getPlatformMBeanServer().invoke(
        new ObjectName("com.sun.management:type=DiagnosticCommand"), "threadPrint", new Object[] {null},
        new String[] {String[].class.getName()});
    final Matcher count = Pattern.compile("JNI global refs: (\\d+)").matcher(dump.toString());
    assertTrue(count.find());
    return Integer.parseInt(count.group(1));
  }

  private void run(List<WeakReference<Object>> handedOver) throws Exception {
    final Recorder listener = new Recorder();
    final List<Integer> sockets = new ArrayList<>();
    try (ZorSuite once = new ZorSuite()) {
      once.setListener(listener);
      ZorSuite.setSocketHook(descriptor -> sockets.size() >= 0);
      once.smartConfigOnlineListen(25010);
      once.smartConfigV5Start("s", "p", 1000);
      announce("A");
      next(listener.announced);
      once.smartConfigStop();
    }
    handedOver.add(new WeakReference<>(listener));
    handedOver.add(new WeakReference<>(sockets));
  }

  @Test
  @Tag("long")
  void tenThousandRunsLeaveNoReference() throws Exception {
    final List<WeakReference<Object>> handedOver = new ArrayList<>();
    run(handedOver);
    final int before = globalReferences();
    for (int i = 0; i < 10_000; ++i) run(handedOver);
    endWorkers();
    final int after = globalReferences();
    assertTrue(after < before + 100, before + " before, " + after + " after");
    waitUntil(() -> {
      System.gc();
      return handedOver.stream().allMatch(reference -> reference.get() == null);
    });
  }
}
