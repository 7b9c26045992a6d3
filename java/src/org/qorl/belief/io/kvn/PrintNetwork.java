package org.qorl.belief.io.kvn;

import java.io.IOException;
import java.io.PrintStream;
import java.nio.file.Path;
import java.util.HashMap;
import java.util.List;
import java.util.Locale;
import java.util.Map;
import java.util.stream.Collectors;
import java.util.stream.IntStream;
import org.qorl.belief.model.Diagnosis;
import org.qorl.belief.model.Network;
import org.qorl.belief.model.Node;
import org.qorl.belief.model.Submodel;

/** Prints a network file as a Java program sees it: {@code java -jar callormel-host.jar FILE}. */
public final class PrintNetwork {
    private static final int MOST_ROWS = 8;
    private static final String INDENT = "  ";

    private final Network network;
    private final PrintStream out;

    private PrintNetwork(Network network, PrintStream out) {
        this.network = network;
        this.out = out;
    }

    /**
     * Reads the file and prints it on standard output; messages go to standard error. Ends the
     * process: 0 when it was printed, 1 when it couldn't be read or the native library isn't there,
     * 2 for a wrong command line.
     *
     * @param arguments one file name
     */
    public static void main(String[] arguments) {
        if (arguments.length != 1) {
            System.err.println("usage: java -jar callormel-host.jar FILE");
            System.exit(2);
        }
        try {
            new PrintNetwork(new ORMELReader().read(Path.of(arguments[0])), System.out).print();
        } catch (IOException | RuntimeException | UnsatisfiedLinkError failure) {
            System.err.println(failure.getMessage());
            System.exit(1);
        }
    }

    private void print() {
        out.println(count(network.nodes().size(), "node") + ", "
                + count(network.submodels().size(), "submodel") + ", "
                + count(network.nodes().stream().mapToInt(node -> node.parents().size()).sum(),
                        "arc"));
        printProperties("", network.properties());
        printTree();
        network.nodes().forEach(this::printNode);
        out.flush();
    }

    /** The submodels come parents first, so each one's depth is known when its turn comes. */
    private void printTree() {
        Map<Integer, List<Node>> members =
                network.nodes().stream().collect(Collectors.groupingBy(Node::submodel));
        Map<Integer, Integer> depths = new HashMap<>();
        for (Submodel submodel : network.submodels()) {
            int depth = depths.getOrDefault(submodel.handle(), 0);
            submodel.children().forEach(child -> depths.put(child, depth + 1));
            out.println(INDENT.repeat(depth) + "[" + submodel.name() + "]");
            for (Node node : members.getOrDefault(submodel.handle(), List.of())) {
                out.println(INDENT.repeat(depth + 1) + node.identifier());
            }
        }
    }

    private void printNode(Node node) {
        out.println();
        out.println(node.identifier() + " \"" + node.name() + "\"  "
                + word(node.kind()) + diagnosis(node));
        printProperties(INDENT, node.properties());
        if (!node.parents().isEmpty()) {
            out.println(INDENT + "parents: " + String.join(", ", node.parents()));
        }
        printRows(node);
    }

    private static String diagnosis(Node node) {
        Diagnosis diagnosis = node.diagnosis();
        String text = ", " + word(diagnosis.type());
        if (diagnosis.mandatory()) {
            text += ", mandatory";
        }
        if (diagnosis.ranked()) {
            text += ", ranked";
        }
        if (diagnosis.defaultOutcome() >= 0) {
            text += ", normally " + node.outcomes().get(diagnosis.defaultOutcome());
        }
        if (!diagnosis.faults().isEmpty()) {
            text += ", faults: " + diagnosis.faults().stream()
                    .map(node.outcomes()::get).collect(Collectors.joining(", "));
        }
        return text;
    }

    private void printRows(Node node) {
        List<String> outcomes = node.outcomes();
        if (outcomes.isEmpty()) {
            return;
        }
        out.println(INDENT + outcomes.stream().map(PrintNetwork::column).collect(Collectors.joining()));
        double[] numbers = node.numbers();
        int rows = numbers.length / outcomes.size();
        for (int row = 0; row < Math.min(rows, MOST_ROWS); row++) {
            int start = row * outcomes.size();
            out.println(INDENT + IntStream.range(start, start + outcomes.size())
                    .mapToObj(i -> column(String.format(Locale.ROOT, "%.6g", numbers[i])))
                    .collect(Collectors.joining()));
        }
        if (rows > MOST_ROWS) {
            out.println(INDENT + "... " + (rows - MOST_ROWS) + " more");
        }
    }

    private void printProperties(String indent, Map<String, String> properties) {
        properties.forEach((key, value) -> out.println(indent + key + " = " + value));
    }

    private static String column(String text) {
        return String.format(Locale.ROOT, "%-12s ", text);
    }

    private static String count(int number, String word) {
        return number + " " + word + (number == 1 ? "" : "s");
    }

    private static String word(Enum<?> constant) {
        return constant.name().toLowerCase(Locale.ROOT).replace('_', ' ');
    }
}
