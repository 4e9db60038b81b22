#pragma once

#include <random>
#include <string>
#include <vector>

#include "tracks/model_host.h"

namespace tracks {

// A signal of noise, whose values no filter of this family may let through.
SourceScript Signal(int count, double interval_ms = 0.1, const std::string& path = "take.wav");

// One line of text for each record, numbers with single blanks between them.
std::string Lines(const std::vector<std::vector<double>>& records);

// Records of 16 numbers that are 0 but for the given column (counted from 1).
std::string Column(int column, const std::vector<double>& values);

// Records as a track file holds them: differences of 16 coordinates, with marks of missing values
// that come and go. Numbers are written in all the ways that a text of numbers may hold.
std::string RandomRecords(std::mt19937& random, int count);

// Breaks the text in one of the ways in which files are broken: a short line, a blank one, a word,
// extra numbers, carriage returns, a missing last line feed, a file that ends within a line.
std::string Broken(std::mt19937& random, const std::string& text);

int Between(std::mt19937& random, int lowest, int highest);

}  // namespace tracks
