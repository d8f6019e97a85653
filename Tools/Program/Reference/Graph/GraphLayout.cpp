#include "Graph/GraphLayout.h"

#include "Graph/NodeDrawing.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Program
{
	namespace
	{
		constexpr int gridSize = 16; // of the editor, where nodes snap in
		constexpr double gapX = 64;
		constexpr double gapY = 64; // the editor may draw nodes higher than they are here

		int onGrid(double length)
		{
			return static_cast<int>(std::ceil(length / gridSize)) * gridSize;
		}

		/** @return where a row ends that begins at x. */
		int placeBeside(Graph& graph, const GraphRow& row, int x)
		{
			for (const size_t node : row.nodes)
			{
				graph.nodes[node].x = x;
				x = onGrid(x + shapeOf(graph, node).width + gapX);
			}
			return x;
		}

		/** @return how far below a node's corner its executions are, so that their wires can run straight. */
		double executionHeight(const Graph& graph, size_t node)
		{
			const NodeShape shape = shapeOf(graph, node);
			for (size_t pin = 0; pin < shape.pins.size(); ++pin)
			{
				if (graph.nodes[node].pins[pin].name == "then")
				{
					return shape.pins[pin].y;
				}
			}
			return 0;
		}

		/** @return the lowest end of what is placed between two sides. */
		int lowestBetween(const Graph& graph, const std::vector<size_t>& placed, int left, int right)
		{
			int lowest = 0;
			for (const size_t node : placed)
			{
				const GraphNode& other = graph.nodes[node];
				const NodeShape shape = shapeOf(graph, node);
				if (other.x < right && other.x + shape.width > left)
				{
					lowest = std::max(lowest, onGrid(other.y + shape.height + gapY));
				}
			}
			return lowest;
		}
	} // namespace

	void placeInRow(Graph& graph)
	{
		GraphRow row;
		row.nodes.resize(graph.nodes.size());
		std::iota(row.nodes.begin(), row.nodes.end(), size_t(0));
		placeInRows(graph, {row});
	}

	void placeInRows(Graph& graph, const std::vector<GraphRow>& rows)
	{
		std::vector<size_t> placed;
		for (const GraphRow& row : rows)
		{
			const int left = row.after ? onGrid(graph.nodes[*row.after].x + shapeOf(graph, *row.after).width + gapX) : 0;
			const int right = placeBeside(graph, row, left);
			const int top = lowestBetween(graph, placed, left, right);
			double level = 0;
			for (const size_t node : row.nodes)
			{
				level = std::max(level, executionHeight(graph, node));
			}
			for (const size_t node : row.nodes)
			{
				graph.nodes[node].y = top + onGrid(level - executionHeight(graph, node));
				placed.push_back(node);
			}
		}
	}
} // namespace Program
