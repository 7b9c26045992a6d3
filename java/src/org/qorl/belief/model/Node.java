package org.qorl.belief.model;

import java.util.Arrays;
import java.util.Collections;
import java.util.LinkedHashMap;
import java.util.List;
import java.util.Map;
import java.util.Objects;

/**
 * A variable of a network with its definition.
 *
 * @param identifier names it within its network
 * @param name for people; may be null
 * @param box where it is drawn
 * @param submodel handle of the submodel that it belongs to
 * @param kind how its numbers are to be read
 * @param outcomes identifiers of its outcomes
 * @param parents identifiers of its parents, in the order of the table's dimensions
 * @param numbers see {@link Kind}; a copy goes in and copies come out
 * @param strengths for a noisy-MAX node the outcomes of each parent in the order of the rows, one
 *     parent after the other; empty for other kinds
 * @param diagnosis its role in a troubleshooting application
 * @param properties user properties in the order of the file; a value may be null
 */
public record Node(
        String identifier,
        String name,
        Box box,
        int submodel,
        Kind kind,
        List<String> outcomes,
        List<String> parents,
        double[] numbers,
        int[] strengths,
        Diagnosis diagnosis,
        Map<String, String> properties) {

    /** Kinds of definition, in the order of the engine's codes from 0. */
    public enum Kind {
        /**
         * A conditional probability table: one distribution over the outcomes for each
         * configuration of the parents, the last parent varying fastest.
         */
        PROBABILITY_TABLE,
        /**
         * A noisy-MAX gate: one distribution for each outcome of each parent, in the order of
         * {@link Node#strengths()}, and last that of the leak.
         */
        NOISY_MAX,
        /** A table of zeros and ones: the outcome follows from the parents. */
        TRUTH_TABLE
    }

    // Makes private copies of arrays and collections.
    public Node {
        Objects.requireNonNull(identifier, "identifier");
        outcomes = List.copyOf(outcomes);
        parents = List.copyOf(parents);
        numbers = numbers.clone();
        strengths = strengths.clone();
        properties = copyOf(properties);
    }

    /**
     * The numbers of the definition, see {@link Kind}.
     *
     * @return a copy
     */
    @Override
    public double[] numbers() {
        return numbers.clone();
    }

    /**
     * Orders of the parents' outcomes.
     *
     * @return a copy
     */
    @Override
    public int[] strengths() {
        return strengths.clone();
    }

    /**
     * The same node with other numbers.
     *
     * @param changed as many as before, since outcomes and parents stay
     * @return a new node
     * @throws IllegalArgumentException for another count, or for one that is infinite or no number,
     *     which no file can hold
     */
    public Node withNumbers(double... changed) {
        if (changed.length != numbers.length) {
            throw new IllegalArgumentException(
                    identifier + " has " + numbers.length + " numbers, not " + changed.length);
        }
        if (!Arrays.stream(changed).allMatch(Double::isFinite)) {
            throw new IllegalArgumentException(identifier + ": not all numbers are finite");
        }
        return new Node(identifier, name, box, submodel, kind, outcomes, parents, changed,
                strengths, diagnosis, properties);
    }

    /**
     * The same node with another role in diagnosis.
     *
     * @param changed the new role
     * @return a new node
     */
    public Node withDiagnosis(Diagnosis changed) {
        return new Node(identifier, name, box, submodel, kind, outcomes, parents, numbers,
                strengths, changed, properties);
    }

    /**
     * The same node with other user properties.
     *
     * @param changed all properties of the new node
     * @return a new node
     */
    public Node withProperties(Map<String, String> changed) {
        return new Node(identifier, name, box, submodel, kind, outcomes, parents, numbers,
                strengths, diagnosis, changed);
    }

    // The ones that records get would compare the arrays by reference.

    @Override
    public boolean equals(Object other) {
        return other instanceof Node node
                && identifier.equals(node.identifier)
                && Objects.equals(name, node.name)
                && box.equals(node.box)
                && submodel == node.submodel
                && kind == node.kind
                && outcomes.equals(node.outcomes)
                && parents.equals(node.parents)
                && Arrays.equals(numbers, node.numbers)
                && Arrays.equals(strengths, node.strengths)
                && diagnosis.equals(node.diagnosis)
                && properties.equals(node.properties);
    }

    @Override
    public int hashCode() {
        return Objects.hash(identifier, kind, parents, Arrays.hashCode(numbers));
    }

    @Override
    public String toString() {
        return "Node[" + identifier + ", " + kind + ", outcomes=" + outcomes + ", parents=" + parents
                + "]";
    }

    /** An unmodifiable copy that keeps the order and null values, which Map.copyOf doesn't. */
    static Map<String, String> copyOf(Map<String, String> source) {
        return Collections.unmodifiableMap(new LinkedHashMap<>(source));
    }
}
