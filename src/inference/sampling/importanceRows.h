#pragma once

/// How the adaptive samplers change one row of an importance table, the distribution of a node at
/// one configuration of its parents. `row` is that of the node's own table; all rows have `count`
/// cells. No row is normalised afterwards: it is sampled as it stands.

/// Equal parts for the outcomes that the table holds possible, 0 for the others.
void SpreadEvenly(const double* row, double* importance, int count);

/// Probabilities below the threshold for this number of outcomes are raised to it, zeros excepted,
/// and the most likely outcome, the first of equals, pays for that. With 21 outcomes or more:
/// SpreadEvenly.
void RaiseSmall(const double* row, double* importance, int count);

/// Moves the row towards the scores, in proportion: by `learningRate` of the way. A row that scored
/// nothing stays.
void LearnFromScores(const double* score, double* importance, int count, double learningRate);

/// Probabilities below the cutoff are raised to it, zeros excepted, and the others share the cost.
/// It is meant that cells exactly at the cutoff share in the division and not in the payment, so
/// that a row may sum to a little more than 1, and that a row in which all cells are small pays
/// nothing.
void CutOff(double* importance, int count, double cutoff);
