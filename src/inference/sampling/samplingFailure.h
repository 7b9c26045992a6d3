#pragma once

/// Tells the log that a sampler came to nothing, in the one text that all of them share. Returns
/// KVN_NO_USEFUL_SAMPLES.
int FailForWantOfSamples();

/// Whether accumulated weight can stand under a posterior: above 0 and finite. Tables with numbers
/// that are none lead here too, and fail as impossible evidence does.
bool IsUsefulWeight(double total);
