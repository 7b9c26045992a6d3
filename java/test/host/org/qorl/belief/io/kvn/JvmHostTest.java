package org.qorl.belief.io.kvn;

import java.io.IOException;
import java.nio.charset.Charset;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Arrays;
import java.util.List;
import java.util.Map;
import java.util.Objects;
import java.util.stream.Stream;
import org.qorl.belief.model.Box;
import org.qorl.belief.model.Diagnosis;
import org.qorl.belief.model.Network;
import org.qorl.belief.model.Node;

/** The host against the native library in a real JVM. Ends with 1 at the first check that fails. */
public final class JvmHostTest {
    private static final int LOADS = 200;

    private final ORMELReader reader = new ORMELReader();
    private final Path example;
    private final Path folder;

    private JvmHostTest(Path example, Path folder) {
        this.example = example;
        this.folder = folder;
    }

    /** Argument: the troubleshooting example. */
    public static void main(String[] arguments) throws Exception {
        Path folder = Files.createTempDirectory("jvmHostTest");
        try {
            JvmHostTest test = new JvmHostTest(Path.of(arguments[0]), folder);
            test.readsTheExample();
            test.readsTextsInBothEncodings();
            test.readsAndWritesXml();
            test.failuresToReadAreReported();
            test.exceptionsOfCallbacksReachTheCaller();
            test.callbacksCannotStartAnotherCall();
            test.numbersThatNoFileHoldsAreRefused();
            test.updateWritesEdits();
            test.updateTakesNulls();
            test.updateReportsFailures();
            test.probesAnswer();
            test.manyLoadsInARow();
            test.longChainOnASmallStack();
            System.out.println("all passed");
        } finally {
            try (Stream<Path> files = Files.list(folder)) {
                for (Path file : files.toList()) {
                    Files.delete(file);
                }
            }
            Files.delete(folder);
        }
    }

    private void readsTheExample() throws IOException {
        Network network = reader.read(example);
        same(Map.of("application", "diagnosis", "language", "en"), network.properties());
        same(4, network.submodels().size());
        same("Espresso machine troubleshooting",
                network.submodel(Network.ROOT_SUBMODEL).orElseThrow().name());
        // Inside stands below Observations, the second child of the root.
        same(List.of(16385, 16386), network.submodels().get(0).children());
        same(List.of(16387), network.submodels().get(2).children());

        Node tank = network.node("WaterTank").orElseThrow();
        same("Water tank", tank.name());
        same(new Box(100, 80, 96, 44), tank.box());
        same(16385, tank.submodel());
        same(List.of("empty", "low", "full"), tank.outcomes());
        same(List.of(), tank.parents());
        same("[0.06, 0.1, 0.84]", Arrays.toString(tank.numbers()));
        same(new Diagnosis(Diagnosis.Type.TARGET, false, true, 2, List.of(0)), tank.diagnosis());

        Node flow = network.node("Flow").orElseThrow();
        same(Node.Kind.NOISY_MAX, flow.kind());
        same(List.of("WaterTank", "Pump", "Scale", "Grind"), flow.parents());
        // The file's (1, 0, 2) for Grind is its own inverse.
        same("[0, 1, 2, 0, 1, 2, 0, 1, 2, 1, 0, 2]", Arrays.toString(flow.strengths()));
        same(13 * 3, flow.numbers().length);
        same(0.95, flow.numbers()[0]);

        same(Map.of("DIAG_TESTGROUPCOST", "True"),
                network.node("CoverOpen").orElseThrow().properties());
    }

    private void readsTextsInBothEncodings() throws IOException {
        for (Charset charset : List.of(StandardCharsets.UTF_8, StandardCharsets.ISO_8859_1)) {
            Path file = folder.resolve("text.kvn");
            Files.writeString(file, "net N { HEADER = { ID = N; NAME = \"M\u00fcnchen\"; };"
                    + " USER_PROPERTIES = { k = \"\u00e9t\u00e9\"; }; };", charset);
            Network network = reader.read(file);
            same("M\u00fcnchen", network.submodels().get(0).name());
            same(Map.of("k", "\u00e9t\u00e9"), network.properties());
        }
    }

    private void readsAndWritesXml() throws Exception {
        Path file = folder.resolve("copy.xkvn");
        reader.update(example, file, reader.read(example));
        Network copy = reader.read(file);
        for (Node node : reader.read(example).nodes()) {
            Node read = copy.node(node.identifier()).orElseThrow();
            same(node.outcomes(), read.outcomes());
            same(node.parents(), read.parents());
            same(Arrays.toString(node.numbers()), Arrays.toString(read.numbers()));
            same(Arrays.toString(node.strengths()), Arrays.toString(read.strengths()));
            same(node.properties(), read.properties());
        }
        Files.writeString(file, "<ormel version=\"1.0\" id=\"N\"><nodes>");
        same(-1, reader.loadKVN(file.toString(), 0));
    }

    private void failuresToReadAreReported() throws Exception {
        same(-1, reader.loadKVN(folder.resolve("none.kvn").toString(), 0));
        same(-1, reader.loadKVN(null, 0));
        fails(IOException.class, "can't be read", () -> reader.read(folder.resolve("none.kvn")));
        Path file = folder.resolve("bad.kvn");
        Files.writeString(file, "net {");
        fails(Exception.class, "KVN_SYNTAX_ERROR; ", () -> reader.loadKVN(file.toString(), -1));
        Files.writeString(file, "net N { node D { TYPE = LIST; PARENTS = (); }; };");
        fails(Exception.class, "C++ error: Network contains unsupported KVN node type: LIST.",
                () -> reader.loadKVN(file.toString(), 0));
        Files.writeString(file, "net N { node D { TYPE = CAST; PARENTS = (); }; };");
        fails(Exception.class, "unsupported KVN node type: (null).",
                () -> reader.loadKVN(file.toString(), 0));
    }

    private void exceptionsOfCallbacksReachTheCaller() {
        ORMELReader[] hosts = {
            new ORMELReader() {
                @Override
                protected void putNetworkParameter(Object key, Object value) {
                    throw new IllegalStateException("thrown by a callback");
                }
            },
            new ORMELReader() {
                @Override
                protected void loadSubmodel(int handle, String name, int x, int y, int[] children) {
                    throw new IllegalStateException("thrown by a callback");
                }
            },
            new ORMELReader() {
                @Override
                protected void loadNode(String name, String identifier, Object[] outcomes,
                        int[] record, String[] parents, double[] numbers, int[] strengths,
                        String[] keys, String[] values) {
                    throw new IllegalStateException("thrown by a callback");
                }
            }
        };
        for (ORMELReader host : hosts) {
            fails(IllegalStateException.class, "thrown by a callback", () -> host.read(example));
        }
    }

    /** The JVM would end: the inner call takes the references of the outer one away. */
    private void callbacksCannotStartAnotherCall() throws IOException {
        Network edited = reader.read(example);
        ORMELReader nesting = new ORMELReader() {
            @Override
            protected void loadSubmodel(int handle, String name, int x, int y, int[] children) {
                fails(IllegalStateException.class, "from a callback", () -> reader.read(example));
                fails(IllegalStateException.class, "from a callback",
                        () -> reader.update(example, folder.resolve("x.kvn"), edited));
                super.loadSubmodel(handle, name, x, y, children);
            }
        };
        same(edited, nesting.read(example));
    }

    private void numbersThatNoFileHoldsAreRefused() throws IOException {
        Node tank = reader.read(example).node("WaterTank").orElseThrow();
        for (double bad : new double[] {Double.NaN, Double.NEGATIVE_INFINITY}) {
            fails(IllegalArgumentException.class, "WaterTank: not all numbers are finite",
                    () -> tank.withNumbers(0, bad, 1));
        }
        fails(IllegalArgumentException.class, "WaterTank has 3 numbers, not 2",
                () -> tank.withNumbers(0, 1));
    }

    private void updateWritesEdits() throws IOException {
        Network before = reader.read(example);
        Node tank = before.node("WaterTank").orElseThrow();
        Node flow = before.node("Flow").orElseThrow();
        double[] parameters = flow.numbers();
        parameters[0] = 0.75;
        parameters[1] = 0.25;
        Network edited = before
                .withProperties(Map.of("language", "de"))
                .withNode(tank.withNumbers(0.5, 0.25, 0.25)
                        .withProperties(Map.of("volume", "2 l"))
                        .withDiagnosis(tank.diagnosis().withType(Diagnosis.Type.AUXILIARY)))
                .withNode(flow.withNumbers(parameters));
        Path output = folder.resolve("edited.kvn");
        reader.update(example, output, edited);

        Network after = reader.read(output);
        same(edited.nodes(), after.nodes());
        same(edited.submodels(), after.submodels());
        same(List.of("application", "language"), List.copyOf(after.properties().keySet()));
        same("de", after.properties().get("language"));
    }

    private void updateTakesNulls() throws Exception {
        Path copy = folder.resolve("copy.kvn");
        same(true, reader.updateKVN(example.toString(), -1, copy.toString(), 0, null, null, null,
                null, null, null, null));
        same(reader.read(example), reader.read(copy));
        Files.delete(copy);
        same(true, reader.updateKVNW(example.toString(), 0, copy.toString(), 4,
                new String[] {"Pump", "Heater"}, new Object[] {null, new double[0]}, new String[0],
                new String[] {"x"}, new Object[] {null, new String[] {"a"}}, new Object[0],
                new Object[] {null, new int[0]}));
        same(reader.read(example), reader.read(copy));
    }

    private void updateReportsFailures() throws Exception {
        String input = example.toString();
        String output = folder.resolve("never.kvn").toString();
        fails(Exception.class, "C++ array of node IDs and array of probabilities are of unequal",
                () -> reader.updateKVN(input, 0, output, 0, new String[] {"Pump"}, null, null, null,
                        null, null, null));
        fails(Exception.class, "C++ error: Attempt to update node 'X' that does not exist in "
                + "network '" + input + "'",
                () -> reader.updateKVN(input, 0, output, 0, new String[] {"X"}, new Object[1], null,
                        null, null, null, null));
        fails(Exception.class, "C++ error: Failed to write file.",
                () -> reader.updateKVN(input, 0, output, 7, null, null, null, null, null, null,
                        null));
        same(false, reader.updateKVN(null, 0, output, 0, null, null, null, null, null, null, null));
        same(false, Files.exists(Path.of(output)));
    }

    private void probesAnswer() throws Exception {
        for (int feature : new int[] {8, 0, -5}) {
            same(true, reader.librarySupports(feature));
            same(true, reader.librarySupportsW(feature));
        }
        same(16384, new ORMELReader().loadKVNW(example.toString(), 0));
        same(0, reader.testJNI());
        same(0, reader.testJNIW());
    }

    /** Loading must not recurse along the network: threads of a JVM have small stacks. */
    private void longChainOnASmallStack() throws Exception {
        int length = 20_000;
        StringBuilder text = new StringBuilder("net N {\n");
        for (int i = 0; i < length; i++) {
            String table = i == 0 ? "(0.5, 0.5)" : "(0.1, 0.9, 0.2, 0.8)";
            text.append("node V").append(i).append(" { TYPE = CPT; PARENTS = (")
                    .append(i == 0 ? "" : "V" + (i - 1))
                    .append("); DEFINITION = { NAMESTATES = (y, n); PROBABILITIES = ")
                    .append(table).append("; }; };\n");
        }
        Path file = folder.resolve("chain.kvn");
        Files.writeString(file, text.append("};\n"));
        Object[] result = new Object[1];
        Thread thread = new Thread(null, () -> {
            try {
                result[0] = reader.read(file).nodes().size();
            } catch (IOException failure) {
                result[0] = failure;
            }
        }, "small stack", 512 * 1024);
        thread.start();
        thread.join();
        same(length, result[0]);
    }

    /** The library keeps every network, so memory grows; the printed number says how fast. */
    private void manyLoadsInARow() throws IOException {
        Network first = reader.read(example);
        for (int i = 0; i < LOADS; i++) {
            reader.read(example);  // until the JVM's own memory has settled
        }
        long before = residentKilobytes();
        for (int i = 0; i < LOADS; i++) {
            same(first, reader.read(example));
        }
        long grown = residentKilobytes() - before;
        System.out.printf("%d loads of %d nodes: memory grew by %d KB, %d KB a load%n", LOADS,
                first.nodes().size(), grown, grown / LOADS);
    }

    private static long residentKilobytes() throws IOException {
        System.gc();
        try (Stream<String> lines = Files.lines(Path.of("/proc/self/status"))) {
            return lines.filter(line -> line.startsWith("VmRSS:"))
                    .mapToLong(line -> Long.parseLong(line.replaceAll("\\D", "")))
                    .findFirst().orElse(0);
        }
    }

    private interface Action {
        void run() throws Exception;
    }

    private static void fails(Class<? extends Exception> type, String text, Action action) {
        try {
            action.run();
        } catch (Exception thrown) {
            boolean asExpected = type == Exception.class ? thrown.getClass() == type
                    : type.isInstance(thrown);
            if (!asExpected || !thrown.getMessage().contains(text)) {
                throw new AssertionError("expected " + type + " with: " + text, thrown);
            }
            return;
        }
        throw new AssertionError("nothing thrown, expected: " + text);
    }

    private static void same(Object expected, Object actual) {
        if (!Objects.equals(expected, actual)) {
            throw new AssertionError("expected " + expected + ", got " + actual);
        }
    }
}
